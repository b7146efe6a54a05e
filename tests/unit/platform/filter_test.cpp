#include "platform/database/filter.h"

#include <gtest/gtest.h>

#include "platform/database/filter_condition.h"
#include "support/fake_database.h"

namespace talvex::test {

namespace {

using automation::Currency;
using automation::Date;
using automation::kNull;
using platform::database::Filter;
using platform::database::RowSet;

// The column ID numbers the rows, so that a test can name those that pass.
RowSet Samples() {
  return MakeRowSet({{"ID", "CODE", "AMOUNT", "START DATE", "STARTDATE", "FLAG", "Größe"},
                     {{1, "Travel", 10.5, "x", Date::Civil(2026, 3, 15), true, "S"},
                      {2, "TRAVEL", -3, "y", Date::Civil(2026, 3, 16), false, "M"},
                      {3, "", 0, kNull, kNull, kNull, kNull},
                      {4, kNull, kNull, "", Date::Civil(2026, 3, 15, 14, 30, 5), true, "L"},
                      {5, "50%", Currency::FromUnits(105000), "it's", Date::Civil(2025, 12, 31), false, "XL"},
                      {6, "1000", std::int16_t{1000}, "[%]", Date::Civil(2027, 1, 1), false, ""}}});
}

std::string Passing(const std::string& text) {
  const RowSet rows = Samples();
  const Filter filter(text, rows);
  std::string passing;
  for (std::size_t row = 0; row < rows.RowCount(); ++row) {
    if (filter.Matches(rows, row)) passing += std::to_string(row + 1);
  }
  return passing;
}

struct FilterRow {
  const char* filter;
  const char* passing;
};

const FilterRow kFilterRows[] = {
    // Texts compare without case; the empty text is a text; Null matches nothing.
    {"CODE = 'travel'", "12"},
    {"code='TRAVEL'", "12"},
    {"[Code] = 'travel'", "12"},
    {"CODE <> 'travel'", "356"},
    {"CODE = ''", "3"},
    {"CODE <> ''", "1256"},
    {"CODE < '50%'", "36"},
    {"CODE <= '50%'", "356"},
    {"CODE > 'a'", "12"},
    {"CODE >= 'travel'", "12"},
    {"[START DATE] = 'it''s'", "5"},
    {"Größe = 'xl'", "5"},
    // The percent sign, as it comes quoted for a pattern.
    {"CODE = '50[%]'", "5"},
    {"CODE = '50%'", "5"},
    {"CODE <> '50[%]'", "1236"},
    {"[START DATE] = '[%]'", ""},
    // Null.
    {"CODE IS NULL", "4"},
    {"code is not null", "12356"},
    {"CODE = 'NULL'", ""},
    // Numbers, of whatever kind, quoted or not.
    {"AMOUNT = 10.5", "15"},
    {"AMOUNT = '10.5'", "15"},
    {"AMOUNT = 1.05E1", "15"},
    {"AMOUNT = '1,000'", "6"},
    {"AMOUNT < 0", "2"},
    {"AMOUNT = -3", "2"},
    {"AMOUNT > -3.0", "1356"},
    {"AMOUNT >= +10.5", "156"},
    {"AMOUNT <> 0", "1256"},
    {"AMOUNT = .0", "3"},
    {"AMOUNT = 'many'", ""},
    {"AMOUNT <> 'many'", ""},
    {"AMOUNT = ''", ""},
    {"FLAG = -1", "14"},
    {"FLAG = 0", "256"},
    // A number compares with a text as it is written.
    {"CODE = 1000", "6"},
    {"CODE = 1000.0", ""},
    // Dates, quoted or not, with a time of day or without.
    {"STARTDATE = '3/15/2026'", "1"},
    {"STARTDATE = #3/15/2026#", "1"},
    {"STARTDATE = '2026-03-15'", "1"},
    {"STARTDATE = '3/15/2026 14:30:05'", "4"},
    {"(STARTDATE <= '3/15/2026')", "15"},
    {"STARTDATE >= '3/15/2026'", "1246"},
    {"STARTDATE <> '3/15/2026'", "2456"},
    {"STARTDATE < '1/1/2026'", "5"},
    {"STARTDATE = 'some day'", ""},
    {"STARTDATE <> 'some day'", ""},
    {"STARTDATE > 40000", ""},
    // LIKE.
    {"CODE LIKE 'tr%'", "12"},
    {"CODE like '*VEL'", "12"},
    {"CODE LIKE '%'", "12356"},
    {"CODE LIKE '50[%]'", "5"},
    {"CODE LIKE '____'", "6"},
    {"AMOUNT LIKE '1%'", "156"},
    {"STARTDATE LIKE '3/15/2026%'", "14"},
    // AND before OR; parentheses; blanks anywhere or nowhere.
    {"ID = 1 OR ID = 2 AND ID = 3", "1"},
    {"(ID = 1 OR ID = 2) AND ID = 2", "2"},
    {"ID=1 or(ID=2)or[ID]=3", "123"},
    {" \t(\n( ID = 1 )\r) ", "1"},
    {"ID > 1 AND ID < 5 AND ID <> 3", "24"},
    {"CODE = 'travel' AND AMOUNT < 0 OR CODE IS NULL", "24"},
    // A date range test as an import puts it.
    {" ((STARTDATE <= '3/15/2026') OR  (STARTDATE >= '1/1/2027') OR  (ID <> '2' AND CODE <> '50%')) ",
     "1356"},
};

TEST(Filter, LetsPassWhatItSays) {
  for (const FilterRow& row : kFilterRows) EXPECT_EQ(Passing(row.filter), row.passing) << row.filter;
}

struct ErrorRow {
  const char* filter;
  const char* description;
};

TEST(Filter, SaysWhatItDoesNotUnderstandAndWhere) {
  const ErrorRow rows[] = {
      {"", "position 1: the filter ends where a column name is expected"},
      {"= 5", "position 1: = stands where a column name is expected"},
      {"5 = ID", "position 1: 5 stands where a column name is expected"},
      {"ID", "position 3: the filter ends where a comparison, LIKE or IS is expected"},
      {"ID ! 5", "position 4: ! stands where a comparison, LIKE or IS is expected"},
      {"ID =", "position 5: the filter ends where a text in quotes, a number or a date is expected"},
      {"ID = CODE", "position 6: CODE stands where a text in quotes, a number or a date is expected"},
      {"ID = NULL", "position 6: NULL stands where a text in quotes, a number or a date is expected"},
      {"ID IS 5", "position 7: 5 stands where NULL or NOT NULL is expected"},
      {"ID IS NOT 5", "position 11: 5 stands where NULL is expected"},
      {"ID = 5 CODE = 'x'", "position 8: CODE stands where AND, OR or the end is expected"},
      {"ID = 5)", "position 7: ) stands where AND, OR or the end is expected"},
      {"(ID = 5", "position 8: the filter ends where AND, OR or a closing parenthesis is expected"},
      {"ID = 5 AND", "position 11: the filter ends where a column name is expected"},
      {"CODE = 'O'Neil'", "position 11: Neil stands where AND, OR or the end is expected"},
      {"CODE = 'open", "position 8: what begins here has no closing '"},
      {"[CODE = 'x'", "position 1: what begins here has no closing ]"},
      {"Größe = #1/1/2026", "position 9: what begins here has no closing #"},
      {"ID = 5x", "position 7: x stands where AND, OR or the end is expected"},
      {"ID = - 5", "position 6: - stands where a text in quotes, a number or a date is expected"},
      {"ID = .", "position 6: . stands where a text in quotes, a number or a date is expected"},
      {"ID = 5; DROP TABLE T", "position 7: ; stands where AND, OR or the end is expected"},
  };
  for (const ErrorRow& row : rows) {
    const Raised raised = RaisedBy([&] { Passing(row.filter); });
    EXPECT_EQ(raised.number, 3001) << row.filter;
    EXPECT_EQ(raised.description, std::string("The filter is not understood at ") + row.description);
  }
}

TEST(Filter, NamesAColumnThatIsNotThere) {
  const Raised raised = RaisedBy([] { Passing("ID = 1 AND NOWHERE = 5"); });
  EXPECT_EQ(raised.number, 3265);
  EXPECT_NE(raised.description.find("'NOWHERE'"), std::string::npos);
}

TEST(Filter, NestsTwoHundredDeepAndNoDeeper) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '(') + "ID = 1" + std::string(depth, ')');
  };
  EXPECT_EQ(Passing(nested(200)), "1");
  EXPECT_EQ(RaisedBy([&] { Passing(nested(201)); }).number, 3001);
  EXPECT_EQ(RaisedBy([&] { Passing(nested(1'000'000)); }).number, 3001);
}

TEST(Filter, ParenthesesSideBySideAreNotNested) {
  std::string text = "(ID = 1)";
  for (int i = 0; i < 1000; ++i) text += " OR (ID = 2)";
  EXPECT_EQ(Passing(text), "12");
}

TEST(Filter, AChainMayBeLong) {
  std::string text = "ID = 7";
  for (int i = 0; i < 100'000; ++i) text += " OR ID = 7";
  EXPECT_EQ(Passing(text + " OR ID = 6"), "6");
}

TEST(Filter, OffersTheEqualitiesThatEveryPassingRowMustMeet) {
  const RowSet rows = Samples();
  const Filter chain("CODE = 'a' AND (ID = 3 AND AMOUNT > 0) AND STARTDATE = '3/15/2026' AND FLAG <> 1",
                     rows);
  std::string columns;
  for (const auto& equality : chain.IndexableEqualities()) {
    columns += std::to_string(equality.column) + "=" + equality.literal->text + ";";
  }
  EXPECT_EQ(columns, "1=a;0=3;4=3/15/2026;");
  EXPECT_TRUE(Filter("ID = 1 OR ID = 2", rows).IndexableEqualities().empty());
  EXPECT_TRUE(Filter("CODE LIKE 'a'", rows).IndexableEqualities().empty());
}

}  // namespace

}  // namespace talvex::test
