#include <cmath>
#include <limits>
#include <random>

#include "servers/odbc_world.h"

namespace talvex::odbc_test {
namespace {

using automation::Currency;
using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::database::FaultKind;

class OdbcSessionTest : public OdbcWorld {};

TEST_F(OdbcSessionTest, ColumnsComeBackAsTheyWereWritten) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (I INTEGER, F DOUBLE PRECISION, D TIMESTAMP(0), S CITEXT)");
  const Date moment = Date::Civil(2024, 2, 29, 23, 59, 58);
  Run(*session, "INSERT INTO T (I, F, D, S) VALUES (?, ?, ?, ?)", {-2147483647, 0.1, moment, "text"});
  const Result rows = Run(*session, "SELECT * FROM T");
  ASSERT_EQ(rows.rows.RowCount(), 1U);
  EXPECT_EQ(rows.rows.Columns(), (std::vector<std::string>{"I", "F", "D", "S"}));
  EXPECT_EQ(rows.rows.Value(0, 0), Variant(-2147483647));
  EXPECT_EQ(rows.rows.Value(0, 1), Variant(0.1));
  EXPECT_EQ(rows.rows.Value(0, 2), Variant(moment));
  EXPECT_EQ(rows.rows.Value(0, 3), Variant("text"));
}

TEST_F(OdbcSessionTest, NullAndWhatWasNeverSetAreNull) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (I INTEGER, F DOUBLE PRECISION, D TIMESTAMP(0), S CITEXT)");
  Run(*session, "INSERT INTO T VALUES (?, ?, ?, ?)", {kNull, Variant(), kNull, kNull});
  const Result rows = Run(*session, "SELECT * FROM T");
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(rows.rows.Value(0, i), Variant(kNull)) << i;
}

TEST_F(OdbcSessionTest, DoublesKeepAllTheirDigits) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (F DOUBLE PRECISION)");
  std::mt19937_64 random(20260316);
  std::uniform_real_distribution<double> mantissa(-1, 1);
  std::uniform_int_distribution<int> exponent(-300, 300);
  std::vector<double> numbers = {0.0,
                                 0.1 + 0.2,
                                 1.0 / 3,
                                 std::numeric_limits<double>::max(),
                                 std::numeric_limits<double>::min(),
                                 std::numeric_limits<double>::denorm_min(),
                                 999999999999999.9};
  for (int i = 0; i < 200; ++i) numbers.push_back(std::ldexp(mantissa(random), exponent(random)));
  for (const double number : numbers) {
    Run(*session, "DELETE FROM T");
    Run(*session, "INSERT INTO T VALUES (?)", {number});
    EXPECT_EQ(Value(*session, "SELECT F FROM T"), Variant(number));
    // What an optimistic update asks.
    EXPECT_EQ(Run(*session, "UPDATE T SET F = ? WHERE F = ?", {number, number}).affected, 1) << number;
  }
}

TEST_F(OdbcSessionTest, TextsKeepEveryLetter) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (S CITEXT)");
  std::string long_text;
  for (int i = 0; i < 2000; ++i)
    long_text += "\xF0\x9F\x98\x80\xC3\xA9";  // Beyond the first plane, and within.
  for (const std::string& text :
       {std::string(), std::string("O'Neil's 100% [x] \\ \"q\" ?"),
        std::string("\xE2\x82\xAC \xF0\x9D\x84\x9E"), std::string(" two lines\r\nand a tab\t "),
        std::string(4000, 'x'), long_text}) {
    Run(*session, "DELETE FROM T");
    Run(*session, "INSERT INTO T VALUES (?)", {text});
    EXPECT_EQ(Value(*session, "SELECT S FROM T"), Variant(text));
    EXPECT_EQ(Value(*session, "SELECT count(*) FROM T WHERE S = ?", {text}), Variant(1)) << text;
  }
}

TEST_F(OdbcSessionTest, OtherKindsOfNumberAreReadAsTheNearestOfOurs) {
  const auto session = Open();
  const Result rows = Run(*session,
                          "SELECT 7::smallint AS A, 9000000000::bigint AS B, 12.3400::numeric(19, 4) AS C, "
                          "'2026-03-15'::date AS D");
  EXPECT_EQ(rows.rows.Value(0, 0), Variant(7));
  EXPECT_EQ(rows.rows.Value(0, 1), Variant(9000000000.0));
  EXPECT_EQ(rows.rows.Value(0, 2), Variant(12.34));
  EXPECT_EQ(rows.rows.Value(0, 3), Variant(Date::Civil(2026, 3, 15)));
}

TEST_F(OdbcSessionTest, ValuesAreConvertedToWhatTheColumnIs) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (I INTEGER, F DOUBLE PRECISION, S CITEXT)");
  Run(*session, "INSERT INTO T VALUES (?, ?, ?)", {true, Currency::FromUnits(123400), 5});
  EXPECT_EQ(Value(*session, "SELECT I FROM T"), Variant(1));
  EXPECT_EQ(Value(*session, "SELECT F FROM T"), Variant(12.34));
  EXPECT_EQ(Value(*session, "SELECT S FROM T"), Variant("5"));
  Run(*session, "UPDATE T SET I = ?", {"12"});
  EXPECT_EQ(Value(*session, "SELECT I FROM T"), Variant(12));
}

TEST_F(OdbcSessionTest, WhatNoTableHoldsIsRefusedBeforeItIsSent) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (S CITEXT)");
  const std::vector<Variant> refused = {std::string("a\0b", 3), "\xff", std::nan(""), automation::Array()};
  for (const Variant& value : refused) {
    ExpectFault(FaultKind::ValueRefused, 8152, "22001", "",
                [&] { Run(*session, "INSERT INTO T VALUES (?)", {value}); });
  }
  ExpectFault(FaultKind::Other, 0, "07002", "takes 1 parameters, but was given 2", [&] {
    Run(*session, "INSERT INTO T VALUES (?)", {"a", "b"});
  });
  EXPECT_EQ(Value(*session, "SELECT count(*) FROM T"), Variant(0));
}

TEST_F(OdbcSessionTest, OneStatementIsRunAtATime) {
  const auto session = Open();
  Run(*session, "CREATE TABLE T (A INTEGER)");
  ExpectFault(FaultKind::Other, 102, "42000", "One statement is run at a time",
              [&] { Run(*session, "DELETE FROM T; DROP TABLE T"); });
  EXPECT_EQ(Value(*session, "SELECT count(*) FROM T;"), Variant(0));
}

TEST_F(OdbcSessionTest, AStatementThatAffectsNoRowSucceeds) {
  const auto session = Open();
  EXPECT_EQ(Run(*session, "DELETE BUDGET WHERE BUDGETCODE='none'").affected, 0);
  EXPECT_EQ(Run(*session, "UPDATE BUDGET SET BUDGETTYPE=1").affected, 0);
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a'), ('b')");
  EXPECT_EQ(Run(*session, "UPDATE BUDGET SET BUDGETTYPE=1").affected, 2);
  EXPECT_EQ(Run(*session, "DELETE BUDGET WHERE BUDGETCODE='A'").affected, 1);
}

TEST_F(OdbcSessionTest, NumbersAreAssignedAndReadBack) {
  const auto session = Open();
  const auto added = [&](const char* text) { return Run(*session, text).identity; };
  EXPECT_EQ(added("INSERT INTO BUDGETLINES (BUDGETCODE) VALUES ('a')"), 1);
  EXPECT_EQ(added("INSERT INTO BUDGETLINES (BUDGETCODE) VALUES ('a')"), 2);
  EXPECT_EQ(added("INSERT INTO CHARGELINES (CHARGELINEID) VALUES (500)"), 500);
  EXPECT_EQ(added("INSERT INTO CHARGELINES (REVISION) VALUES (1)"), 501);
  EXPECT_EQ(added("INSERT INTO CHARGELINES DEFAULT VALUES"), 502);
  EXPECT_EQ(added("INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')"), std::nullopt);
  const Result result = Run(*session, "INSERT INTO BUDGETLINES (BUDGETCODE) VALUES ('b'), ('c')");
  EXPECT_EQ(result.affected, 2);
  EXPECT_EQ(result.rows.Columns().size(), 0U);
}

TEST_F(OdbcSessionTest, TheCatalogueTellsKeysAndAssignedColumns) {
  const auto session = Open();
  EXPECT_EQ(session->Table("NOSUCHTABLE"), nullptr);
  const auto lines = session->Table("budgetlines");
  ASSERT_NE(lines, nullptr);
  EXPECT_EQ(lines->name, "BUDGETLINES");
  ASSERT_EQ(lines->columns.size(), 12U);
  EXPECT_EQ(lines->columns[0].name, "ID");
  EXPECT_TRUE(lines->columns[0].key && lines->columns[0].assigned);
  EXPECT_FALSE(lines->columns[1].key || lines->columns[1].assigned);
  const auto relations = session->Table("BUDGETRELATIONS");
  EXPECT_TRUE(relations->columns[0].key && relations->columns[1].key);
  EXPECT_TRUE(session->Table("BUDGETDIMENSIONTYPE")->columns[0].key);
  EXPECT_FALSE(session->Table("ACCOUNTINGPARAMETER")->columns[0].key);
}

TEST_F(OdbcSessionTest, TextsCompareWithoutCase) {
  const auto session = Open();
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('It_2'), ('IT'), ('it-1'), ('ITA')");
  EXPECT_EQ(Value(*session, "SELECT BUDGETCODE FROM BUDGET WHERE BUDGETCODE='it_2'"), Variant("It_2"));
  EXPECT_EQ(Value(*session, "SELECT BUDGETCODE FROM BUDGET WHERE BUDGETCODE=?", {"iT"}), Variant("IT"));
  EXPECT_EQ(Value(*session, "SELECT BUDGETCODE FROM BUDGET WHERE BUDGETCODE LIKE 'IT-%'"), Variant("it-1"));
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET ORDER BY BUDGETCODE ASC"),
            (Values{"IT", "it-1", "It_2", "ITA"}));
}

TEST_F(OdbcSessionTest, RowsWithoutAnOrderComeInThatOfTheirKey) {
  const auto session = Open();
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('c', 1), ('A', 2), ('b', 1)");
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET"), (Values{"A", "b", "c"}));
  Run(*session, "UPDATE BUDGET SET BUDGETTYPE = 3 WHERE BUDGETCODE = 'A'");
  EXPECT_EQ(Column(*session, "Select BudgetCode from [Budget] where BudgetType > 0 -- all"),
            (Values{"A", "b", "c"}));
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET ORDER BY BUDGETTYPE"), (Values{"b", "c", "A"}));
  EXPECT_EQ(Value(*session, "SELECT MAX(BUDGETCODE) AS HIGHEST FROM BUDGET"), Variant("c"));
  Run(*session, "INSERT INTO ACCOUNTINGPARAMETER VALUES ('x', '2'), ('x', '1'), ('a', '0')");
  EXPECT_EQ(Column(*session, "SELECT PARAMETERVALUE FROM ACCOUNTINGPARAMETER"), (Values{"2", "1", "0"}));
}

TEST_F(OdbcSessionTest, ABlockOfRowsIsReadAndTheRestIsKnownToBeThere) {
  const auto session = Open();
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a'), ('b'), ('c')");
  const Result two = Run(*session, "SELECT * FROM BUDGET", {}, 2);
  EXPECT_EQ(two.rows.RowCount(), 2U);
  EXPECT_FALSE(two.complete);
  const Result three = Run(*session, "SELECT * FROM BUDGET", {}, 3);
  EXPECT_EQ(three.rows.RowCount(), 3U);
  EXPECT_TRUE(three.complete);
}

TEST_F(OdbcSessionTest, TheIsolationLevelIsAnswered) {
  const auto session = Open();
  const auto run = driver_.Counts().run.load();
  Run(*session, "set TRANSACTION ISOLATION LEVEL READ COMMITTED");
  EXPECT_EQ(driver_.Counts().run, run);
}

TEST_F(OdbcSessionTest, ADateComparesWithAWholeNumberAsADay) {
  const auto session = Open();
  Run(*session, "INSERT INTO BUDGETLINES (BUDGETCODE, ENDDATE) VALUES ('a', '1900-01-03T00:00:00')");
  Run(*session, "INSERT INTO BUDGETLINES (BUDGETCODE) VALUES ('b')");
  const auto lines = [&](const char* condition) {
    return Column(*session, std::string("SELECT BUDGETCODE FROM BUDGETLINES WHERE ENDDATE") + condition);
  };
  EXPECT_EQ(lines(">=3/16/2026"), Values{"a"});
  EXPECT_EQ(lines("=2"), Values{"a"});
  EXPECT_EQ(lines("<3"), Values{"a"});
  EXPECT_EQ(lines("<=1"), Values{});
  EXPECT_EQ(lines(">2"), Values{});
  EXPECT_EQ(lines("<>1"), Values{"a"});
}

TEST_F(OdbcSessionTest, TheClockIsTheServersUnlessItIsFixed) {
  adapters::odbc::OdbcDriver fixed(Date::Civil(2026, 1, 5, 9, 7, 3));
  const auto session = fixed.Open(platform::database::ConnectionString(store_.ConnectionText()));
  EXPECT_EQ(Value(*session, "SELECT GETDATE()"), Variant(Date::Civil(2026, 1, 5, 9, 7, 3)));
  const auto free = Open();
  EXPECT_EQ(Value(*free, "SELECT CASE WHEN GETDATE() > '2026-11-01' THEN 1 ELSE 0 END"), Variant(1));
}

TEST_F(OdbcSessionTest, TextsThatDifferInQuotedTextsOnlyArePreparedOnce) {
  const auto session = Open();
  for (const char* const code : {"a", "b", "c"}) {
    Run(*session, "SELECT * FROM BUDGET WHERE BUDGETCODE='" + std::string(code) + "'");
  }
  EXPECT_EQ(driver_.Counts().prepared, 1U);
  EXPECT_EQ(driver_.Counts().run, 3U);
}

}  // namespace
}  // namespace talvex::odbc_test
