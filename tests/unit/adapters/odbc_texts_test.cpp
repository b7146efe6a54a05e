// What the ODBC adapter does without a server: texts, statements and failures.

#include <gtest/gtest.h>

#include "adapters/odbc/dialect.h"
#include "adapters/odbc/faults.h"
#include "adapters/odbc/savepoints.h"
#include "adapters/odbc/wide_text.h"
#include "platform/database/driver.h"

namespace talvex::test {
namespace {

using namespace adapters::odbc;  // NOLINT(google-build-using-namespace): the test is about all of it.
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::kAllRows;
using platform::database::SqlShape;

TEST(OdbcSavepoints, AreTakenFromTheDriverOnlyWhereItIsKnownAndNothingElseIsAskedFor) {
  const std::pair<const char*, const char*> rows[] = {
      {"Driver=PostgreSQL Unicode;Database=x", "Driver=PostgreSQL Unicode;Database=x;Protocol=7.4-0"},
      {"driver={/usr/lib/odbc/psqlodbcw.so};", "driver={/usr/lib/odbc/psqlodbcw.so};Protocol=7.4-0"},
      {"Driver=PostgreSQL ANSI;protocol=7.4-2", "Driver=PostgreSQL ANSI;protocol=7.4-2"},
      {"DSN=PostgreSQL", "DSN=PostgreSQL"},
      {"Driver=FreeTDS;Server=x", "Driver=FreeTDS;Server=x"},
  };
  for (const auto& [given, used] : rows)
    EXPECT_EQ(Savepoints::WithoutTheDrivers(platform::database::ConnectionString(given)).Text(), used);
}

TEST(OdbcWideText, KeepsEveryLetter) {
  for (const std::string text :
       {"", "plain", "\xC3\xA9\xE2\x82\xAC", "a\xF0\x9F\x98\x80z", "\xF4\x8F\xBF\xBF"})
    EXPECT_EQ(ToNarrow(ToWide(text)), text);
  EXPECT_EQ(ToWide("\xF0\x9F\x98\x80"), (WideText{0xD83D, 0xDE00}));
}

TEST(OdbcWideText, AHalfAloneIsReplaced) {
  EXPECT_EQ(ToNarrow(WideText{'a', 0xD83D, 'b', 0xDE00}),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
}

std::string Adapted(Server server, std::string_view text) {
  SqlShape shape(DialectOf(server));
  shape.Read(text);
  return shape.Text();
}

TEST(OdbcDialect, PostgreSqlGetsWhatItCanRead) {
  EXPECT_EQ(Adapted(Server::PostgreSql, "DELETE LEDGERACCOUNT WHERE LEDGERACCOUNT=N'4000'"),
            "DELETE FROM LEDGERACCOUNT WHERE LEDGERACCOUNT=?");
  EXPECT_EQ(Adapted(Server::PostgreSql, "SELECT [Text], \"A\"\"B\" FROM [I18NTEXT]"),
            "SELECT \"text\", \"a\"\"b\" FROM \"i18ntext\"");
  EXPECT_EQ(Adapted(Server::PostgreSql, "DELETE [T]"), "DELETE FROM \"t\"");
}

TEST(OdbcDialect, ServersThatAreNotKnownAreTakenForSqlServer) {
  EXPECT_EQ(ServerOf("PostgreSQL"), Server::PostgreSql);
  EXPECT_EQ(ServerOf("Microsoft SQL Server"), Server::SqlServer);
  EXPECT_EQ(ServerOf(""), Server::SqlServer);
}

const KnownTable kTable{
    {"BUDGETRELATIONS",
     {{"PARENTBUDGET", true, false}, {"CHILDBUDGET", true, false}, {"NOTE", false, false}}},
    {"NOTE"}};

TEST(OdbcDialect, AQueryOnOneTableIsOrderedByItsKey) {
  EXPECT_EQ(OrderedQuery(Server::PostgreSql, "SELECT * FROM BUDGETRELATIONS", &kTable, kAllRows),
            "SELECT * FROM BUDGETRELATIONS ORDER BY \"parentbudget\", \"childbudget\"");
  EXPECT_EQ(
      OrderedQuery(Server::PostgreSql, "SELECT * FROM BUDGETRELATIONS ORDER BY CHILDBUDGET DESC", &kTable,
                   64),
      "SELECT * FROM BUDGETRELATIONS ORDER BY CHILDBUDGET DESC, \"parentbudget\", \"childbudget\" LIMIT 65");
  EXPECT_EQ(OrderedQuery(Server::PostgreSql, "SELECT COUNT(*) FROM BUDGETRELATIONS", &kTable, 1),
            "SELECT COUNT(*) FROM BUDGETRELATIONS");
  EXPECT_EQ(OrderedQuery(Server::PostgreSql, "SELECT * FROM A, B", nullptr, 1), "SELECT * FROM A, B");
  const KnownTable keyless{{"ACCOUNTINGPARAMETER", {{"PARAMETERNAME", false, false}}}, {}};
  EXPECT_EQ(OrderedQuery(Server::PostgreSql, "SELECT * FROM ACCOUNTINGPARAMETER", &keyless, kAllRows),
            "SELECT * FROM ACCOUNTINGPARAMETER ORDER BY ctid");
}

TEST(OdbcDialect, SqlServerGetsTheKeyBehindPlainColumnsOnly) {
  const auto ordered = [](std::string_view text) {
    return OrderedQuery(Server::SqlServer, text, &kTable, kAllRows);
  };
  const std::string all = "SELECT * FROM BUDGETRELATIONS";
  EXPECT_EQ(ordered(all + "; -- all"), all + " ORDER BY PARENTBUDGET, CHILDBUDGET");
  EXPECT_EQ(ordered(all + " ORDER BY [NOTE] DESC"), all + " ORDER BY [NOTE] DESC, PARENTBUDGET, CHILDBUDGET");
  EXPECT_EQ(ordered(all + " ORDER BY childbudget DESC, NOTE ASC"),
            all + " ORDER BY childbudget DESC, NOTE ASC, PARENTBUDGET");
  for (const std::string& text :
       {all + " ORDER BY PARENTBUDGET, CHILDBUDGET", all + " ORDER BY 1", all + " ORDER BY LEN(NOTE)",
        all + " ORDER BY BUDGETRELATIONS.NOTE", std::string("SELECT COUNT(*) FROM BUDGETRELATIONS")}) {
    EXPECT_EQ(ordered(text), text);
  }
  EXPECT_EQ(OrderedQuery(Server::SqlServer, "SELECT * FROM A, B", nullptr, 1), "SELECT * FROM A, B");
}

TEST(OdbcDialect, NullComesWhereSqlServerPutsIt) {
  EXPECT_EQ(OrderedQuery(Server::PostgreSql, "SELECT * FROM BUDGETRELATIONS ORDER BY note DESC, CHILDBUDGET ",
                         &kTable, kAllRows),
            "SELECT * FROM BUDGETRELATIONS ORDER BY note DESC NULLS LAST, CHILDBUDGET , \"parentbudget\", "
            "\"childbudget\"");
  EXPECT_EQ(
      OrderedQuery(Server::PostgreSql, "SELECT * FROM A, B ORDER BY A.X ASC, F(B, C)", nullptr, kAllRows),
      "SELECT * FROM A, B ORDER BY A.X ASC NULLS FIRST, F(B, C) NULLS FIRST");
  const KnownTable types{{"BUDGETDIMENSIONTYPE", {{"OFFICEDESCRIPTION", true, false}}},
                         {"OFFICEDESCRIPTION"}};
  EXPECT_EQ(OrderedQuery(Server::PostgreSql, "SELECT * FROM BUDGETDIMENSIONTYPE", &types, kAllRows),
            "SELECT * FROM BUDGETDIMENSIONTYPE ORDER BY \"officedescription\" NULLS FIRST");
}

TEST(OdbcDialect, AnInsertReturnsItsNumberInTheServersOwnWay) {
  const auto on_sql_server = [](std::string_view text) {
    return ReturningInsert(Server::SqlServer, text, "ID");
  };
  const std::string before = "DECLARE @ASSIGNED TABLE (NUMBER BIGINT); ";
  const std::string after = "; SELECT NUMBER FROM @ASSIGNED";
  EXPECT_EQ(on_sql_server("INSERT INTO T (A, \"VALUES\") VALUES (?, (SELECT 1))"),
            before +
                "INSERT INTO T (A, \"VALUES\") OUTPUT INSERTED.ID INTO @ASSIGNED VALUES (?, (SELECT 1))" +
                after);
  EXPECT_EQ(on_sql_server("INSERT INTO T DEFAULT VALUES; -- one"),
            before + "INSERT INTO T OUTPUT INSERTED.ID INTO @ASSIGNED DEFAULT VALUES" + after);
  EXPECT_EQ(on_sql_server("INSERT T SELECT * FROM U"),
            before + "INSERT T OUTPUT INSERTED.ID INTO @ASSIGNED SELECT * FROM U" + after);
  EXPECT_EQ(ReturningInsert(Server::PostgreSql, "INSERT INTO T DEFAULT VALUES", "ID"),
            "INSERT INTO T DEFAULT VALUES RETURNING \"id\"");
}

TEST(OdbcDialect, PlainNamesOfPostgreSqlAreSpelledAsTheComponentDoes) {
  EXPECT_EQ(SpelledName(Server::PostgreSql, "budgetcode"), "BUDGETCODE");
  EXPECT_EQ(SpelledName(Server::PostgreSql, "Mixed"), "Mixed");
  EXPECT_EQ(SpelledName(Server::SqlServer, "Text"), "Text");
}

struct FaultRow {
  std::vector<Diagnostic> records;
  FaultKind kind;
  std::int32_t number;
  const char* state;
  const char* description;
};

TEST(OdbcFaults, AreToldByNativeNumberAndElseBySqlState) {
  const std::vector<FaultRow> rows = {
      {{{"23000", 2627, "[FreeTDS][SQL Server]Violation of PRIMARY KEY constraint 'PK_BUDGET'."}},
       FaultKind::Duplicate,
       2627,
       "23000",
       "Violation of PRIMARY KEY constraint 'PK_BUDGET'."},
      {{{"23000", 2601, "unique index"}}, FaultKind::Duplicate, 2627, "23000", "unique index"},
      {{{"23000", 515, "null"}}, FaultKind::NullNotAllowed, 515, "23000", "null"},
      // The record that says least may come first.
      {{{"01000", 3621, "The statement has been terminated."},
        {"23000", 547, "[FreeTDS][SQL Server]conflicted with FK_ACCOUNTINGRULE_LEDGERACCOUNT"}},
       FaultKind::Constraint,
       547,
       "23000",
       "conflicted with FK_ACCOUNTINGRULE_LEDGERACCOUNT"},
      {{{"40001", 1205, "deadlock"}}, FaultKind::Conflict, 1205, "40001", "deadlock"},
      {{{"HY000", 1222, "lock"}}, FaultKind::Conflict, 1205, "40001", "lock"},
      {{{"22001", 8152, "long"}}, FaultKind::ValueRefused, 8152, "22001", "long"},
      {{{"42S02", 208, "Invalid object name 'X'."}},
       FaultKind::Other,
       208,
       "42S02",
       "Invalid object name 'X'."},
      {{{"23505", 1, "ERROR: duplicate key \"PK\"\nDETAIL: Key (a)=(b);\nError while executing the query"}},
       FaultKind::Duplicate,
       2627,
       "23000",
       "duplicate key \"PK\""},
      {{{"40P01", 1, "ERROR: deadlock detected"}}, FaultKind::Conflict, 1205, "40001", "deadlock detected"},
      {{{"22012", 1, "ERROR: division by zero;\nError while executing the query"}},
       FaultKind::Other,
       8134,
       "22012",
       "division by zero"},
      {{}, FaultKind::Other, 0, "HY000", "The driver reports a failure without a reason"}};
  for (const FaultRow& row : rows) {
    const Fault fault = FaultOf(row.records);
    EXPECT_EQ(fault.Kind(), row.kind) << row.description;
    EXPECT_EQ(fault.NativeError(), row.number) << row.description;
    EXPECT_EQ(fault.SqlState(), row.state) << row.description;
    EXPECT_STREQ(fault.what(), row.description);
  }
}

TEST(OdbcFaults, ALostConnectionIsNoConflictThatCouldBeRunAgain) {
  const std::vector<Diagnostic> records = {{"08S01", 1, "server closed the connection unexpectedly"}};
  EXPECT_TRUE(TellsLoss(records));
  EXPECT_EQ(LossOf(records).Kind(), FaultKind::CannotOpen);
  EXPECT_TRUE(TellsLoss(std::vector<Diagnostic>{{"57P01", 1, "terminating"}}));
  EXPECT_FALSE(TellsLoss(std::vector<Diagnostic>{{"57014", 1, "canceled"}, {"23505", 1, ""}}));
}

}  // namespace
}  // namespace talvex::test
