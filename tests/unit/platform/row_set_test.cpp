#include "platform/database/row_set.h"

#include <gtest/gtest.h>

#include <limits>

#include "automation/conversions.h"
#include "support/fake_database.h"

namespace talvex::test {

namespace {

using automation::Currency;
using automation::Date;
using automation::Kind;
using automation::kNull;
using automation::Variant;
using platform::database::RowSet;

TEST(RowSet, GivesBackEveryKindOfValueAsItWasPut) {
  const Row values = {kNull,
                      true,
                      std::int16_t{-7},
                      123456,
                      0.1,
                      Currency::FromUnits(-12345),
                      Date::Civil(2026, 3, 15, 14, 30, 5),
                      "",
                      "text",
                      Variant()};
  RowSet rows({"A", "B", "C", "D", "E", "F", "G", "H", "I", "J"});
  for (const Variant& value : values) rows.Append(value);
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(rows.Value(0, i), values[i]);
    EXPECT_EQ(rows.TypeAt(0, i), values[i].Type());
  }
}

TEST(RowSet, GivesBackWhatWasPutWithoutAVariant) {
  RowSet rows({"A", "B", "C", "D", "E"});
  rows.Append(kNull);
  rows.Append(7);
  rows.Append(0.5);
  rows.Append(Date::Civil(2026, 3, 15));
  rows.Append(std::string_view("text"));
  EXPECT_EQ(rows.Value(0, 0), Variant(kNull));
  EXPECT_EQ(rows.Value(0, 1), Variant(7));
  EXPECT_EQ(rows.Value(0, 2), Variant(0.5));
  EXPECT_EQ(rows.Value(0, 3), Variant(Date::Civil(2026, 3, 15)));
  EXPECT_EQ(rows.Value(0, 4), Variant("text"));
  EXPECT_EQ(rows.TextAt(0, 4), "text");
  EXPECT_EQ(rows.TextAt(0, 1), "");
}

TEST(RowSet, FindsColumnsInAnyCase) {
  const RowSet rows({"BUDGETCODE", "BudgetType"});
  EXPECT_EQ(rows.Find("budgettype"), 1U);
  EXPECT_EQ(rows.Find("BUDGET"), std::nullopt);
}

TEST(RowSet, KeepsTextsWhileItGrowsOverManyPages) {
  RowSet rows({"ID", "CODE"});
  constexpr int kRows = 5000;
  for (int i = 0; i < kRows; ++i) {
    rows.Append(i);
    rows.Append(std::string_view("code " + std::to_string(i)));
  }
  ASSERT_EQ(rows.RowCount(), static_cast<std::size_t>(kRows));
  for (std::size_t i = 0; i < kRows; ++i) {
    ASSERT_EQ(rows.Value(i, 0), Variant(static_cast<std::int32_t>(i)));
    ASSERT_EQ(rows.TextAt(i, 1), "code " + std::to_string(i));
  }
}

TEST(RowSet, TakesATextLongerThanAnyBlock) {
  RowSet rows({"A"});
  const std::string longest(1'000'000, 'x');
  rows.Append(std::string_view("before"));
  rows.Append(std::string_view(longest));
  rows.Append(std::string_view("after"));
  EXPECT_EQ(rows.TextAt(0, 0), "before");
  EXPECT_EQ(rows.TextAt(1, 0), longest);
  EXPECT_EQ(rows.TextAt(2, 0), "after");
}

TEST(RowSet, SetsOneCellAndNoOther) {
  RowSet rows = MakeRowSet({{"A", "B"}, {{1, "x"}, {2, "y"}}});
  rows.Set(1, 0, "now a text");
  EXPECT_EQ(rows.Value(1, 0), Variant("now a text"));
  EXPECT_EQ(rows.Value(0, 0), Variant(1));
  EXPECT_EQ(rows.Value(1, 1), Variant("y"));
}

TEST(RowSet, CopiesARowOfAnotherSetWithItsTexts) {
  RowSet copy({"A", "B"});
  {
    const RowSet rows = MakeRowSet({{"A", "B"}, {{1, "x"}, {2, "a longer text"}}});
    copy.AppendRow(rows, 1);
  }
  ASSERT_EQ(copy.RowCount(), 1U);
  EXPECT_EQ(copy.Value(0, 0), Variant(2));
  EXPECT_EQ(copy.Value(0, 1), Variant("a longer text"));
}

TEST(RowSet, RemovesTheLastRowAlsoWhereAPageBegins) {
  RowSet rows({"A"});
  for (int i = 0; i < 1025; ++i) rows.Append(i);
  rows.RemoveLastRow();
  EXPECT_EQ(rows.RowCount(), 1024U);
  rows.RemoveLastRow();
  EXPECT_EQ(rows.RowCount(), 1023U);
  rows.Append(7);
  EXPECT_EQ(rows.RowCount(), 1024U);
  EXPECT_EQ(rows.Value(1023, 0), Variant(7));
}

TEST(RowSet, WithoutColumnsHasNoRows) { EXPECT_EQ(RowSet().RowCount(), 0U); }

TEST(RowSet, RefusesWhatNoTableHolds) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double no_number = std::numeric_limits<double>::quiet_NaN();
  RowSet rows({"A"});
  for (const Variant& value :
       Row{automation::Array(), Variant(std::shared_ptr<automation::Object>()), kInfinity, no_number}) {
    EXPECT_EQ(RaisedBy([&] { rows.Append(value); }).number, -2147217887);
  }
  EXPECT_EQ(RaisedBy([&] { rows.Append(kInfinity); }).number, -2147217887);
  EXPECT_EQ(rows.RowCount(), 0U);
}

}  // namespace

}  // namespace talvex::test
