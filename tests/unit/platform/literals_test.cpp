#include "platform/database/literals.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/fake_database.h"

namespace talvex::test {

namespace {

using automation::Currency;
using automation::Date;
using automation::Variant;
using platform::database::DateLiteral;
using platform::database::NumberLiteral;
using platform::database::TextLiteral;

TEST(TextLiteral, DoublesQuotesAndLeavesTheRestAsItIs) {
  EXPECT_EQ(TextLiteral("O'Neil's 50%"), "'O''Neil''s 50%'");
  EXPECT_EQ(TextLiteral(""), "''");
}

TEST(NumberLiteral, IsPlainDecimalHoweverLargeOrSmall) {
  const std::pair<Variant, const char*> rows[] = {
      {0, "0"},
      {-2147483647, "-2147483647"},
      {std::int16_t{-3}, "-3"},
      {0.1, "0.1"},
      {-12.35, "-12.35"},
      {1e15, "1000000000000000"},
      {1e21, "1000000000000000000000"},
      {1e-7, "0.0000001"},
      {Currency::FromUnits(123400), "12.34"},
      {"1,000.5", "1000.5"},
  };
  for (const auto& [number, literal] : rows) EXPECT_EQ(NumberLiteral(number), literal);
}

TEST(NumberLiteral, NamesTheLargestNumberWhole) {
  const std::string literal = NumberLiteral(std::numeric_limits<double>::max());
  EXPECT_EQ(literal.size(), 309U);
  EXPECT_EQ(std::stod(literal), std::numeric_limits<double>::max());
}

TEST(NumberLiteral, RefusesWhatIsNoNumber) {
  EXPECT_EQ(
      RaisedBy([] { static_cast<void>(NumberLiteral(std::numeric_limits<double>::infinity())); }).number, 13);
  EXPECT_EQ(
      RaisedBy([] { static_cast<void>(NumberLiteral(std::numeric_limits<double>::quiet_NaN())); }).number,
      13);
  EXPECT_EQ(RaisedBy([] { static_cast<void>(NumberLiteral("1; DROP TABLE BUDGET")); }).number, 13);
  EXPECT_EQ(RaisedBy([] { static_cast<void>(NumberLiteral(automation::kNull)); }).number, 94);
}

TEST(DateLiteral, IsTheDayWithoutItsTime) {
  EXPECT_EQ(DateLiteral(Date::Civil(2026, 3, 15, 23, 59, 59)), "'2026-03-15T00:00:00'");
  EXPECT_EQ(DateLiteral(Date::Civil(2026, 3, 15)), "'2026-03-15T00:00:00'");
}

}  // namespace

}  // namespace talvex::test
