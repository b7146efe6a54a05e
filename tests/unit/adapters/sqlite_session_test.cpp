#include <limits>

#include "unit/adapters/sqlite_world.h"

namespace talvex::sqlite_test {
namespace {

using automation::Currency;
using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::database::FaultKind;

class SqliteSessionTest : public SqliteWorld {
 protected:
  static std::vector<std::string> KeyColumns(const platform::database::TableInfo& table) {
    std::vector<std::string> names;
    for (const auto& column : table.columns) {
      if (column.key) names.push_back(column.name + (column.assigned ? "!" : ""));
    }
    return names;
  }
};

TEST_F(SqliteSessionTest, ValuesHaveTheKindOfTheirColumn) {
  const auto session = OpenNew(
      "CREATE TABLE T (ID INTEGER PRIMARY KEY, S NVARCHAR(50), I INT, F FLOAT, D DATETIME);"
      "INSERT INTO T VALUES (1, 'text', -5, 3, '2026-03-15T14:30:05')");
  const Result result = Run(*session, "SELECT * FROM T");
  EXPECT_EQ(result.rows.Columns(), (std::vector<std::string>{"ID", "S", "I", "F", "D"}));
  ASSERT_EQ(result.rows.RowCount(), 1U);
  EXPECT_EQ(result.rows.Value(0, 0), Variant(1));
  EXPECT_EQ(result.rows.Value(0, 1), Variant("text"));
  EXPECT_EQ(result.rows.Value(0, 2), Variant(-5));
  EXPECT_EQ(result.rows.Value(0, 3), Variant(3.0));
  EXPECT_EQ(result.rows.Value(0, 4), Variant(Date::Civil(2026, 3, 15, 14, 30, 5)));
  EXPECT_EQ(result.affected, 0);
  EXPECT_TRUE(result.complete);
  EXPECT_FALSE(result.identity.has_value());
}

TEST_F(SqliteSessionTest, NullIsNullInAColumnOfAnyKind) {
  const auto session =
      OpenNew("CREATE TABLE T (S NVARCHAR(50), I INT, F FLOAT, D DATETIME); INSERT INTO T DEFAULT VALUES");
  const Result result = Run(*session, "SELECT * FROM T");
  for (std::size_t column = 0; column < 4; ++column) EXPECT_EQ(result.rows.Value(0, column), Variant(kNull));
}

TEST_F(SqliteSessionTest, TextsInADateColumnThatAreNoDatesStayTexts) {
  const auto session =
      OpenNew("CREATE TABLE T (D datetime); INSERT INTO T VALUES ('2026-02-30T00:00:00'), ('soon')");
  const Result result = Run(*session, "SELECT D FROM T");
  EXPECT_EQ(result.rows.Value(0, 0), Variant("2026-02-30T00:00:00"));
  EXPECT_EQ(result.rows.Value(1, 0), Variant("soon"));
}

TEST_F(SqliteSessionTest, WholeNumbersBeyond32BitsAreDoubles) {
  const auto session = OpenNew("CREATE TABLE T (I INT)");
  EXPECT_EQ(Value(*session, "SELECT 2147483647"), Variant(2147483647));
  EXPECT_EQ(Value(*session, "SELECT -2147483648"), Variant(std::numeric_limits<std::int32_t>::min()));
  EXPECT_EQ(Value(*session, "SELECT 2147483648"), Variant(2147483648.0));
  Run(*session, "INSERT INTO T VALUES (-3000000000)");
  EXPECT_EQ(Value(*session, "SELECT I FROM T"), Variant(-3000000000.0));
}

TEST_F(SqliteSessionTest, ExpressionsHaveTheKindTheyAreStoredIn) {
  const auto session = OpenNew("CREATE TABLE T (F FLOAT); INSERT INTO T VALUES (1.5), (2.5)");
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(2));
  EXPECT_EQ(Value(*session, "SELECT SUM(F) FROM T"), Variant(4.0));
  EXPECT_EQ(Value(*session, "SELECT 'a' || 'b'"), Variant("ab"));
}

TEST_F(SqliteSessionTest, BytesAreNotRead) {
  const auto session = OpenNew("CREATE TABLE T (S); INSERT INTO T VALUES (x'00ff')");
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "column S holds bytes",
              [&] { Run(*session, "SELECT S FROM T"); });
}

TEST_F(SqliteSessionTest, ParametersAreStoredInTheirOwnForm) {
  const auto session = OpenNew("CREATE TABLE T (A)");
  const auto stored = [&](const Variant& value) {
    Run(*session, "INSERT INTO T VALUES (?)", {value});
    const Variant text =
        Value(*session, "SELECT typeof(A) || ':' || ifnull(A, '') FROM T ORDER BY rowid DESC LIMIT 1");
    return text.As<std::string>();
  };
  EXPECT_EQ(stored(Variant()), "null:");
  EXPECT_EQ(stored(kNull), "null:");
  EXPECT_EQ(stored(true), "integer:1");
  EXPECT_EQ(stored(false), "integer:0");
  EXPECT_EQ(stored(std::int16_t{-7}), "integer:-7");
  EXPECT_EQ(stored(70000), "integer:70000");
  EXPECT_EQ(stored(0.25), "real:0.25");
  EXPECT_EQ(stored(Currency::FromUnits(123400)), "real:12.34");
  EXPECT_EQ(stored(Date::Civil(2026, 3, 15, 14, 30, 5)), "text:2026-03-15T14:30:05");
  EXPECT_EQ(stored("it's 'é'"), "text:it's 'é'");
  EXPECT_EQ(stored(""), "text:");
}

TEST_F(SqliteSessionTest, ValuesThatNoTableHoldsAreRefused) {
  const auto session = OpenNew("CREATE TABLE T (A)");
  const auto refuse = [&](const Variant& value, std::string_view part) {
    ExpectFault(FaultKind::ValueRefused, 8152, "22001", part,
                [&] { Run(*session, "INSERT INTO T VALUES (?)", {value}); });
  };
  refuse(std::numeric_limits<double>::infinity(), "not finite");
  refuse(std::numeric_limits<double>::quiet_NaN(), "not finite");
  refuse(std::string("a\0b", 3), "NUL");
  refuse("\xff", "UTF-8");
  refuse("\xc3", "UTF-8");
  refuse(automation::Array({Variant(1)}), "Array");
  refuse(Variant(automation::ObjectRef()), "Object");
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(0));
}

TEST_F(SqliteSessionTest, StatementsAreUtf8WithoutNulCharacters) {
  const auto session = OpenNew("CREATE TABLE T (A)");
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "NUL",
              [&] { Run(*session, std::string_view("INSERT INTO T VALUES ('a\0b')", 28)); });
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "NUL",
              [&] { Run(*session, std::string_view("DELETE FROM T\0 WHERE 1=0", 24)); });
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "UTF-8",
              [&] { Run(*session, "INSERT INTO T VALUES ('\xe9')"); });
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(0));
}

TEST_F(SqliteSessionTest, ParametersMustBeAsManyAsTheStatementTakes) {
  const auto session = OpenNew("CREATE TABLE T (A, B)");
  const std::string text = "INSERT INTO T VALUES (?, 'x')";
  ExpectFault(FaultKind::Other, 0, "07002", "takes 1 parameters, but was given 0",
              [&] { Run(*session, text); });
  ExpectFault(FaultKind::Other, 0, "07002", "takes 1 parameters, but was given 2", [&] {
    Run(*session, text, {1, 2});
  });
  for (const char* const other : {"SELECT :a", "SELECT @a", "SELECT $a", "SELECT A FROM T WHERE A = ?2"}) {
    ExpectFault(FaultKind::Other, 0, "07002", "in no other way", [&] { Run(*session, other, Values(1)); });
  }
}

TEST_F(SqliteSessionTest, QuotedTextsAndParametersMeetTheirPlaces) {
  const auto session = OpenNew("CREATE TABLE T (A, B, C, D)");
  Run(*session, "INSERT INTO T (A, B, C, D) VALUES (?, 'b''s', ?, N'd')", {"a", 3});
  const Result result = Run(*session, "SELECT * FROM T WHERE A='a' AND B=? AND D='d'", {"b's"});
  ASSERT_EQ(result.rows.RowCount(), 1U);
  EXPECT_EQ(result.rows.Value(0, 1), Variant("b's"));
  EXPECT_EQ(result.rows.Value(0, 2), Variant(3));
  EXPECT_EQ(result.rows.Value(0, 3), Variant("d"));
}

TEST_F(SqliteSessionTest, WritingCountsTheRows) {
  const auto session = OpenNew("CREATE TABLE T (A INT)");
  EXPECT_EQ(Run(*session, "INSERT INTO T VALUES (1), (2), (3)").affected, 3);
  EXPECT_EQ(Run(*session, "UPDATE T SET A = 5 WHERE A > 1").affected, 2);
  EXPECT_EQ(Run(*session, "UPDATE T SET A = 5 WHERE A > 100").affected, 0);
  EXPECT_EQ(Run(*session, "SELECT * FROM T").affected, 0);
  EXPECT_EQ(Run(*session, "CREATE TABLE U (A INT)").affected, 0);
  EXPECT_EQ(Run(*session, "WITH V AS (SELECT 5 AS A) DELETE FROM T WHERE A IN (SELECT A FROM V)").affected,
            2);
}

TEST_F(SqliteSessionTest, AnInsertTellsTheNumberThatTheDatabaseAssigned) {
  const auto session = OpenNew(
      "CREATE TABLE LINES (ID INTEGER PRIMARY KEY AUTOINCREMENT, A INT);"
      "CREATE TABLE PLAIN (A INT);"
      "CREATE TABLE CODES (CODE TEXT NOT NULL PRIMARY KEY) WITHOUT ROWID");
  EXPECT_EQ(Run(*session, "INSERT INTO LINES (A) VALUES (7)").identity, 1);
  EXPECT_EQ(Run(*session, "INSERT INTO [lines] (A) VALUES (8)").identity, 2);
  EXPECT_EQ(Run(*session, "INSERT INTO LINES (ID, A) VALUES (50, 9)").identity, 50);
  EXPECT_EQ(Run(*session, "INSERT INTO LINES (A) SELECT A FROM PLAIN").identity, std::nullopt);
  EXPECT_EQ(Run(*session, "INSERT INTO PLAIN VALUES (1)").identity, std::nullopt);
  EXPECT_EQ(Run(*session, "INSERT INTO CODES VALUES ('x')").identity, std::nullopt);
  EXPECT_EQ(Run(*session, "UPDATE LINES SET A = 0").identity, std::nullopt);
}

TEST_F(SqliteSessionTest, ReadsAsManyRowsAsAskedAndSaysWhetherThereAreMore) {
  const auto session = OpenNew("CREATE TABLE T (A INT); INSERT INTO T VALUES (1), (2), (3)");
  const auto read = [&](std::size_t most) { return Run(*session, "SELECT A FROM T", {}, most); };
  EXPECT_EQ(read(2).rows.RowCount(), 2U);
  EXPECT_FALSE(read(2).complete);
  EXPECT_EQ(read(3).rows.RowCount(), 3U);
  EXPECT_TRUE(read(3).complete);
  EXPECT_EQ(read(0).rows.RowCount(), 0U);
  EXPECT_FALSE(read(0).complete);
  EXPECT_EQ(read(0).rows.Columns().size(), 1U);
}

TEST_F(SqliteSessionTest, AResultThatWasReadInPartHoldsNoLock) {
  const auto session = OpenNew("CREATE TABLE T (A INT); INSERT INTO T VALUES (1), (2)");
  EXPECT_FALSE(Run(*session, "SELECT A FROM T", {}, 1).complete);
  Run(*session, "DROP TABLE T");
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM sqlite_schema"), Variant(0));
}

TEST_F(SqliteSessionTest, ADeleteNeedsNoFrom) {
  const auto session = OpenNew("CREATE TABLE T (A NVARCHAR(50)); INSERT INTO T VALUES ('x'), ('y'), ('z')");
  EXPECT_EQ(Run(*session, "DELETE T WHERE A='x'").affected, 1);
  EXPECT_EQ(Run(*session, "DELETE [T] WHERE A='y'").affected, 1);
  EXPECT_EQ(Run(*session, "DELETE FROM T").affected, 1);
}

TEST_F(SqliteSessionTest, NamesMayStandInBrackets) {
  const auto session = OpenNew("CREATE TABLE [ORDER] ([GROUP] INT); INSERT INTO [ORDER] VALUES (4)");
  EXPECT_EQ(Value(*session, "SELECT [GROUP] FROM [ORDER] WHERE [ORDER].[GROUP] = 4"), Variant(4));
}

TEST_F(SqliteSessionTest, TheIsolationLevelIsAnsweredWithoutTheDatabase) {
  const auto session = OpenNew("");
  const Result result = Run(*session, "set TRANSACTION ISOLATION LEVEL READ COMMITTED");
  EXPECT_TRUE(result.rows.Columns().empty());
  EXPECT_EQ(result.affected, 0);
  EXPECT_EQ(driver_.Counters().compiled, 0U);
  EXPECT_EQ(driver_.Counters().run, 0U);
  ExpectFault(FaultKind::Other, 1, "HY000", "syntax error", [&] { Run(*session, "SET NOCOUNT ON"); });
}

TEST_F(SqliteSessionTest, NothingIsRunOfATextWithTwoStatements) {
  const auto session = OpenNew("CREATE TABLE T (A INT); INSERT INTO T VALUES (1)");
  for (const char* const text :
       {"DELETE FROM T; SELECT 1", "DELETE FROM T;;", "DELETE FROM T; DELETE FROM T",
        "DELETE FROM T WHERE A = 1;'x'", "INSERT INTO T VALUES (2); -- fine\nDROP TABLE T"}) {
    ExpectFault(FaultKind::Other, 102, "42000", "more text follows", [&] { Run(*session, text); });
  }
  EXPECT_EQ(driver_.Counters().compiled, 0U);
  EXPECT_EQ(Value(*session, "SELECT A FROM T; -- and that is all"), Variant(1));
}

TEST_F(SqliteSessionTest, NothingIsRunWhereTheDatabaseSeesAnotherEndThanTheReader) {
  const auto session = OpenNew("CREATE TABLE T (A INT); INSERT INTO T VALUES (1)");
  // For SQLite, which knows no doubled "]", the name in brackets ends at the first one.
  ExpectFault(FaultKind::Other, 1, "HY000", "",
              [&] { Run(*session, "SELECT 1 AS [a]];DELETE FROM T WHERE 1=[]"); });
  // A byte order mark is a blank for SQLite, which sees no statement at all.
  ExpectFault(FaultKind::Other, 102, "42000", "not one statement", [&] { Run(*session, "\xef\xbb\xbf"); });
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(1));
}

TEST_F(SqliteSessionTest, TextsCompareAsQuotedOnesDo) {
  const auto session = OpenNew(
      "CREATE TABLE T (C NVARCHAR(50) COLLATE NOCASE, I INT, D DATETIME);"
      "INSERT INTO T VALUES ('Abc', 7, '2026-03-15T00:00:00')");
  EXPECT_EQ(Run(*session, "SELECT * FROM T WHERE C = 'aBC'").rows.RowCount(), 1U);
  EXPECT_EQ(Run(*session, "SELECT * FROM T WHERE I = '7'").rows.RowCount(), 1U);
  EXPECT_EQ(Run(*session, "SELECT * FROM T WHERE D <= '2026-03-15T00:00:00'").rows.RowCount(), 1U);
  // A date without quotes is a division, whose result is below every text.
  EXPECT_EQ(Run(*session, "SELECT * FROM T WHERE D >= 3/15/2026").rows.RowCount(), 1U);
}

TEST_F(SqliteSessionTest, TablesAreKnownWithTheirKeysWhateverTheCase) {
  const auto session = OpenNew(
      "CREATE TABLE BudgetLines (ID INTEGER PRIMARY KEY AUTOINCREMENT, CODE TEXT);"
      "CREATE TABLE PAIR (A TEXT NOT NULL, B TEXT NOT NULL, C TEXT, PRIMARY KEY (B, A)) WITHOUT ROWID;"
      "CREATE TABLE ALIAS (N INTEGER PRIMARY KEY);"
      "CREATE TABLE NOALIAS (N INTEGER PRIMARY KEY DESC);"
      "CREATE TABLE SMALL (N INT PRIMARY KEY);"
      "CREATE TABLE ROWLESS (N INTEGER PRIMARY KEY) WITHOUT ROWID;"
      "CREATE TABLE KEYLESS (A INT);"
      "CREATE VIEW SEEN AS SELECT * FROM ALIAS");
  const auto lines = session->Table("BUDGETLINES");
  ASSERT_NE(lines, nullptr);
  EXPECT_EQ(lines->name, "BudgetLines");
  ASSERT_EQ(lines->columns.size(), 2U);
  EXPECT_EQ(lines->columns[1].name, "CODE");
  EXPECT_EQ(KeyColumns(*lines), std::vector<std::string>{"ID!"});
  EXPECT_EQ(KeyColumns(*session->Table("pair")), (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(KeyColumns(*session->Table("ALIAS")), std::vector<std::string>{"N!"});
  EXPECT_EQ(KeyColumns(*session->Table("NOALIAS")), std::vector<std::string>{"N"});
  EXPECT_EQ(KeyColumns(*session->Table("SMALL")), std::vector<std::string>{"N"});
  EXPECT_EQ(KeyColumns(*session->Table("ROWLESS")), std::vector<std::string>{"N"});
  EXPECT_TRUE(KeyColumns(*session->Table("KEYLESS")).empty());
  EXPECT_EQ(session->Table("SEEN"), nullptr);
  EXPECT_EQ(session->Table("NOWHERE"), nullptr);
  EXPECT_EQ(session->Table("x' OR 1=1 --"), nullptr);
}

TEST_F(SqliteSessionTest, TablesAreReadAnewAfterTheyWereChanged) {
  const auto session = OpenNew("CREATE TABLE T (A INT)");
  const auto before = session->Table("T");
  EXPECT_EQ(session->Table("t"), before);
  Run(*session, "ALTER TABLE T ADD COLUMN B INT");
  EXPECT_EQ(session->Table("T")->columns.size(), 2U);
  EXPECT_EQ(before->columns.size(), 1U);
  Run(*session, "DROP TABLE T");
  EXPECT_EQ(session->Table("T"), nullptr);
}

TEST_F(SqliteSessionTest, TablesAreReadAnewAfterTheirChangeWasUndone) {
  const auto session = OpenNew("");
  session->Begin();
  Run(*session, "CREATE TABLE T (ID INTEGER PRIMARY KEY)");
  EXPECT_NE(session->Table("T"), nullptr);
  session->Rollback();
  EXPECT_EQ(session->Table("T"), nullptr);
}

TEST_F(SqliteSessionTest, AStatementSeesColumnsThatAnotherSessionChanged) {
  const auto session = OpenNew("CREATE TABLE T (A INT); INSERT INTO T VALUES (1)");
  EXPECT_EQ(Run(*session, "SELECT * FROM T").rows.Columns().size(), 1U);
  Run(*Open(), "ALTER TABLE T ADD COLUMN D DATETIME DEFAULT '2026-03-15T00:00:00'");
  const Result result = Run(*session, "SELECT * FROM T");
  EXPECT_EQ(result.rows.Columns(), (std::vector<std::string>{"A", "D"}));
  EXPECT_EQ(result.rows.Value(0, 1), Variant(Date::Civil(2026, 3, 15)));
}

}  // namespace
}  // namespace talvex::sqlite_test
