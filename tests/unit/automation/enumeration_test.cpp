#include "automation/enumeration.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace talvex::automation {
namespace {

TALVEX_ENUM(Phase, std::int32_t, Open = 1, NotYet = 2, closed = -7, Least = -2147483648, Last = 2147483647, );
TALVEX_ENUM(Tiny, std::int16_t, Only = 32767);

using Members = std::vector<std::pair<std::string, std::int32_t>>;

TEST(Enumeration, DescribesItsMembersInTheOrderOfTheirDeclaration) {
  const EnumerationInfo& info = DescribeEnumeration(Phase{});
  EXPECT_EQ(info.Name(), "Phase");
  EXPECT_EQ(
      info.Members(),
      (Members{{"Open", 1}, {"NotYet", 2}, {"closed", -7}, {"Least", -2147483648}, {"Last", 2147483647}}));
  EXPECT_EQ(DescribeEnumeration(Tiny{}).Members(), (Members{{"Only", 32767}}));
  EXPECT_EQ(&DescribeEnumeration(Phase::Open), &info);
}

TEST(Enumeration, DescriptionAgreesWithTheCompiler) {
  const EnumerationInfo& info = DescribeEnumeration(Phase{});
  EXPECT_EQ(info.NumberOf("Open"), static_cast<std::int32_t>(Phase::Open));
  EXPECT_EQ(info.NumberOf("NotYet"), static_cast<std::int32_t>(Phase::NotYet));
  EXPECT_EQ(info.NumberOf("closed"), static_cast<std::int32_t>(Phase::closed));
  EXPECT_EQ(info.NumberOf("Least"), static_cast<std::int32_t>(Phase::Least));
  EXPECT_EQ(info.NumberOf("Last"), static_cast<std::int32_t>(Phase::Last));
}

TEST(Enumeration, FindsMembersWithoutCase) {
  const EnumerationInfo& info = DescribeEnumeration(Phase{});
  EXPECT_EQ(info.NumberOf("nOTyET"), std::optional<std::int32_t>(2));
  EXPECT_EQ(info.NumberOf("CLOSED"), std::optional<std::int32_t>(-7));
  for (const char* name : {"", "Phase", "Ope", "Openn", " Open", "1"})
    EXPECT_EQ(info.NumberOf(name), std::nullopt) << name;
}

TEST(Enumeration, ReadsADeclarationHoweverItIsSpaced) {
  const Members expected = {{"A", 1}, {"B", -2}};
  EXPECT_EQ(EnumerationInfo("E", "A = 1, B = -2").Members(), expected);
  EXPECT_EQ(EnumerationInfo("E", "A=1,B=-2").Members(), expected);
  EXPECT_EQ(EnumerationInfo("E", "  A  =  1 ,  B=  -2  , ").Members(), expected);
  EXPECT_EQ(EnumerationInfo("E", "").Members(), Members());
}

}  // namespace
}  // namespace talvex::automation
