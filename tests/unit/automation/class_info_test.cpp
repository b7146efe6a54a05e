#include "automation/class_info.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/error_of.h"
#include "unit/automation/sample_class.h"

namespace talvex::automation {
namespace {

using automation_test::Grade;
using automation_test::Sample;
using automation_test::Shade;
using automation_test::Stranger;

TEST(ClassInfo, TellsWhatTheClassIs) {
  const Sample sample;
  EXPECT_EQ(&sample.Class(), &Sample::Info());
  EXPECT_EQ(Sample::ClassName(), "Sample.Everything");
  EXPECT_EQ(Sample::Info().Name(), "Sample.Everything");
  EXPECT_EQ(Sample::Info().Documentation(), "Every kind of member.");
  EXPECT_TRUE(Stranger::Info().Methods().empty());
  EXPECT_TRUE(Stranger::Info().Properties().empty());
}

TEST(ClassInfo, ListsMembersInTheOrderOfTheirDeclaration) {
  std::vector<std::string> methods;
  for (const Method& method : Sample::Info().Methods()) methods.push_back(method.name + ": " + method.result);
  EXPECT_EQ(methods, (std::vector<std::string>{"Nothing: ", "ByValue: string", "ByConstReference: string",
                                               "ByReference: boolean", "Variants: ", "Optionals: string",
                                               "Darker: Shade", "AnyObject: object",
                                               "OwnClass: Sample.Everything", "Fails: ", "Delete: int32"}));
  std::vector<std::string> properties;
  for (const Property& property : Sample::Info().Properties()) {
    properties.push_back(property.name + ": " + property.type +
                         (property.set == nullptr ? ", read only" : ""));
  }
  EXPECT_EQ(properties, (std::vector<std::string>{"Owner: string", "Tone: Shade", "Next: Sample.Everything",
                                                  "Calls: int32, read only", "Limit: double"}));
  EXPECT_EQ(Sample::Info().FindMethod("Darker")->documentation, "iShade plus iGrade as numbers.");
  EXPECT_EQ(Sample::Info().FindProperty("Limit")->documentation, "At most 100; more raises error 5.");
}

TEST(ClassInfo, DescribesEveryKindOfParameter) {
  struct Row {
    std::string method;
    std::vector<std::string> parameters;
  };
  const Row rows[] = {
      {"Nothing", {}},
      {"ByValue",
       {"in string iText", "in double iDouble", "in int32 iInt32", "in int16 iInt16", "in boolean iBoolean",
        "in currency iCurrency", "in date iDate", "in array iArray"}},
      {"ByConstReference",
       {"in string iText", "in currency iCurrency", "in date iDate", "in array iArray", "in variant iVariant",
        "in Sample.Everything iSample", "in Shade iShade"}},
      {"ByReference",
       {"in/out string ioText", "in/out double ioDouble", "in/out int32 ioInt32", "in/out int16 ioInt16",
        "in/out boolean ioBoolean", "in/out currency ioCurrency", "in/out date ioDate",
        "in/out array ioArray", "in/out Shade ioShade", "in/out Sample.Everything ioSample"}},
      {"Variants", {"in variant iByValue", "in variant iByConst", "in/out variant ioByReference"}},
      {"Optionals",
       {"in string iText optional", "in double iDouble optional", "in Shade iShade optional",
        "in variant iVariant optional", "in/out variant oCount optional"}},
      {"AnyObject", {"in object iObject"}},
  };
  for (const Row& row : rows) {
    std::vector<std::string> described;
    for (const Parameter& parameter : Sample::Info().FindMethod(row.method)->parameters) {
      described.push_back((parameter.by_reference ? "in/out " : "in ") + parameter.type + " " +
                          parameter.name + (parameter.optional ? " optional" : ""));
    }
    EXPECT_EQ(described, row.parameters) << row.method;
  }
}

TEST(ClassInfo, NamesTheEnumerationOfAParameterHoweverItIsPassed) {
  const auto enumeration = [](const char* method, std::size_t position) {
    return Sample::Info().FindMethod(method)->parameters.at(position).enumeration;
  };
  EXPECT_EQ(enumeration("Darker", 0), &DescribeEnumeration(Shade{}));
  EXPECT_EQ(enumeration("Darker", 1), &DescribeEnumeration(Grade{}));
  EXPECT_EQ(enumeration("ByConstReference", 6), &DescribeEnumeration(Shade{}));
  EXPECT_EQ(enumeration("ByReference", 8), &DescribeEnumeration(Shade{}));
  EXPECT_EQ(enumeration("Optionals", 2), &DescribeEnumeration(Shade{}));
  EXPECT_EQ(enumeration("Optionals", 0), nullptr);
  EXPECT_EQ(enumeration("ByValue", 2), nullptr);
}

TEST(ClassInfo, FindsMembersWithoutCase) {
  const ClassInfo& info = Sample::Info();
  EXPECT_EQ(info.FindMethod("BYVALUE"), info.FindMethod("ByValue"));
  ASSERT_NE(info.FindMethod("byvalue"), nullptr);
  EXPECT_EQ(info.FindMethod("ByValu"), nullptr);
  EXPECT_EQ(info.FindMethod(""), nullptr);
  ASSERT_NE(info.FindProperty("oWNER"), nullptr);
  EXPECT_EQ(info.FindProperty("oWNER")->name, "Owner");
  EXPECT_EQ(info.FindProperty("CallCount"), nullptr);  // Published as "Calls".
  EXPECT_EQ(info.FindMethod("Delete_"), nullptr);      // Published as "Delete".
  EXPECT_EQ(info.FindMethod("Owner"), nullptr);
  EXPECT_EQ(info.FindProperty("ByValue"), nullptr);
}

TEST(ParameterNames, AreReadFromTheDeclarationAsItStands) {
  struct Row {
    std::string declaration;
    std::vector<std::string> names;
  };
  const Row rows[] = {
      {"()", {}},
      {"( )", {}},
      {"(int iNumber)", {"iNumber"}},
      {"( int   iNumber )", {"iNumber"}},
      {"(const std::string& iUser, Variant& ioValue)", {"iUser", "ioValue"}},
      {"(const std::string &iUser, Variant &ioValue, Variant *oValue)", {"iUser", "ioValue", "oValue"}},
      {"(int a,int b_2,\n int _c)", {"a", "b_2", "_c"}},
      {"(std::map<int, std::string> iMap, int iNext)", {"iMap", "iNext"}},
      {"(std::map<int, std::pair<int, int>> iMap, std::optional<std::vector<int>> iList)", {"iMap", "iList"}},
      {"(const std::function<int(int, int)>& iFunction, int iNext)", {"iFunction", "iNext"}},
      {"(int iNumber = 5, bool iFlag = false)", {"iNumber", "iFlag"}},
      {"(Date iDate = {}, std::optional<int> iLimit = std::nullopt)", {"iDate", "iLimit"}},
      {"(Date iDate = Date::Civil(2026, 3, 15), int iNext=-1)", {"iDate", "iNext"}},
      {"(Pair iPair = {1, 2}, int iNext = kMost)", {"iPair", "iNext"}},
  };
  for (const Row& row : rows) EXPECT_EQ(ParameterNames(row.declaration), row.names) << row.declaration;
}

}  // namespace
}  // namespace talvex::automation
