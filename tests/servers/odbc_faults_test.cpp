#include "adapters/odbc/faults.h"

#include "servers/odbc_world.h"

namespace talvex::odbc_test {
namespace {

using automation::kNull;
using automation::Variant;
using platform::database::ConnectionString;
using platform::database::FaultKind;

class OdbcFaultsTest : public OdbcWorld {};

TEST_F(OdbcFaultsTest, CarryTheNumbersOfSqlServerAndNameTheConstraint) {
  const auto session = Open();
  const auto run = [&](std::string_view text) { return [&session, text] { Run(*session, text); }; };
  Run(*session, "INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT) VALUES ('4000')");
  Run(*session, "INSERT INTO ACCOUNTINGRULE (LEDGERACCOUNT) VALUES ('4000')");
  ExpectFault(FaultKind::Duplicate, 2627, "23000", "PK_LEDGERACCOUNT",
              run("INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT) VALUES ('4000')"));
  ExpectFault(FaultKind::NullNotAllowed, 515, "23000", "childbudget",
              run("INSERT INTO BUDGETRELATIONS (PARENTBUDGET) VALUES ('a')"));
  ExpectFault(FaultKind::Constraint, 547, "23000", "FK_ACCOUNTINGRULE_LEDGERACCOUNT",
              run("DELETE LEDGERACCOUNT WHERE LEDGERACCOUNT='4000'"));
  ExpectFault(FaultKind::Constraint, 547, "23000", "FK_REQUISITIONLINE_LEDGERACCOUNT",
              run("INSERT INTO REQUISITIONLINE VALUES (1, 1, 'none')"));
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "BUDGET.BUDGETCODE takes up to 50 characters",
              run("INSERT INTO BUDGET (BUDGETCODE) VALUES ('" + std::string(51, 'x') + "')"));
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "integer",
              run("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('a', 'x')"));
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "out of range",
              run("INSERT INTO BUDGETLINES (STARTDATE) VALUES ('2026-02-30T00:00:00')"));
  ExpectFault(FaultKind::Duplicate, 2627, "23000", "UQ_BUDGETDIMENSIONTYPE",
              run("INSERT INTO BUDGETDIMENSIONTYPE (BUDGETDIMTYPE1) VALUES ('a'), ('b')"));
  ExpectFault(FaultKind::Other, 208, "42S02", "nosuchtable", run("SELECT * FROM NOSUCHTABLE"));
  ExpectFault(FaultKind::Other, 207, "42S22", "nosuchcolumn", run("SELECT NOSUCHCOLUMN FROM BUDGET"));
  ExpectFault(FaultKind::Other, 102, "42000", "syntax error", run("SELECT * FORM BUDGET"));
}

TEST_F(OdbcFaultsTest, ATextAtItsLongestFits) {
  const auto session = Open();
  std::string letters;
  for (int i = 0; i < 50; ++i) letters += "\xF0\x9F\x98\x80";
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES (?)", {letters});
  EXPECT_EQ(Value(*session, "SELECT BUDGETCODE FROM BUDGET"), Variant(letters));
}

TEST_F(OdbcFaultsTest, AFailedStatementLeavesItsTransactionOpen) {
  const auto session = Open();
  session->Begin();
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
  ExpectFault(FaultKind::Duplicate, 2627, "23000", "",
              [&] { Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('A')"); });
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('b')");
  session->Commit();
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET"), (Values{"a", "b"}));
}

// With savepoints of the session's own, and with those of the driver.
TEST_F(OdbcFaultsTest, WhatFailsIsUndoneAloneWhateverCameBefore) {
  for (const char* const more : {"", ";Protocol=7.4-2"}) {
    const auto session = Open(more);
    session->Begin();
    Run(*session, "SELECT * FROM BUDGET");
    ExpectFault(FaultKind::Other, 208, "42S02", "", [&] { Run(*session, "SELECT * FROM NOSUCHTABLE"); });
    Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
    ExpectFault(FaultKind::Other, 207, "42S22", "",
                [&] { Run(*session, "SELECT NOSUCHCOLUMN FROM BUDGET"); });
    Run(*session, "SELECT * FROM BUDGET");
    Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('b')");
    Run(*session, "UPDATE BUDGET SET BUDGETTYPE=1");
    ExpectFault(FaultKind::Duplicate, 2627, "23000", "",
                [&] { Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('c'), ('A')"); });
    EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET"), (Values{"a", "b"}));
    session->Commit();
    EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET WHERE BUDGETTYPE=1"), (Values{"a", "b"}))
        << more;
    Run(*session, "DELETE BUDGET");
  }
}

TEST_F(OdbcFaultsTest, AFailureOfTheFirstStatementLosesNothing) {
  const auto session = Open();
  session->Begin();
  ExpectFault(FaultKind::Other, 208, "42S02", "", [&] { Run(*session, "SELECT * FROM NOSUCHTABLE"); });
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
  session->Commit();
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET"), Values{"a"});
}

TEST_F(OdbcFaultsTest, AnotherIsolationIsSaidBeforeAllElse) {
  const auto session = Open();
  session->Begin();
  Run(*session, "set TRANSACTION ISOLATION LEVEL SERIALIZABLE");
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
  ExpectFault(FaultKind::Other, 1, "25001", "ISOLATION LEVEL",
              [&] { Run(*session, "set TRANSACTION ISOLATION LEVEL REPEATABLE READ"); });
  EXPECT_EQ(Value(*session, "SELECT current_setting('transaction_isolation')"), Variant("serializable"));
  session->Commit();
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET"), Values{"a"});
}

TEST_F(OdbcFaultsTest, WhatIsRolledBackIsGoneAndTheSessionServesAgain) {
  const auto session = Open();
  session->Begin();
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
  EXPECT_FALSE(session->Usable());
  session->Rollback();
  EXPECT_TRUE(session->Usable());
  EXPECT_EQ(Column(*session, "SELECT BUDGETCODE FROM BUDGET"), Values{});
  ExpectFault(FaultKind::Other, 3902, "25000", "no transaction", [&] { session->Commit(); });
}

TEST_F(OdbcFaultsTest, WaitingTooLongForALockIsAConflictThatEndsTheTransaction) {
  const auto one = Open();
  const auto other = Open();
  Run(*one, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
  Run(*other, "SET lock_timeout = '100ms'");
  one->Begin();
  Run(*one, "UPDATE BUDGET SET BUDGETTYPE = 1");
  other->Begin();
  ExpectFault(FaultKind::Conflict, 1205, "40001", "lock timeout",
              [&] { Run(*other, "UPDATE BUDGET SET BUDGETTYPE = 2"); });
  ExpectFault(FaultKind::Other, 3930, "25000", "roll it back", [&] { Run(*other, "SELECT * FROM BUDGET"); });
  ExpectFault(FaultKind::Other, 3930, "25000", "roll it back", [&] { other->Commit(); });
  EXPECT_TRUE(other->Usable());
  one->Commit();
  EXPECT_EQ(Value(*other, "SELECT BUDGETTYPE FROM BUDGET"), Variant(1));
}

// What makes optimistic updates safe here: an update that waited for another one looks at the row again.
TEST_F(OdbcFaultsTest, AnUpdateOfARowThatChangedMeanwhileFindsItNoMore) {
  const auto one = Open();
  const auto other = Open();
  Run(*one, "INSERT INTO BUDGETLINES (BUDGETCODE, USEDSENDAMNT) VALUES ('a', 10)");
  const char* const update = "UPDATE BUDGETLINES SET USEDSENDAMNT = ? WHERE ID = ? AND USEDSENDAMNT = ?";
  one->Begin();
  other->Begin();
  EXPECT_EQ(Value(*other, "SELECT USEDSENDAMNT FROM BUDGETLINES"), Variant(10.0));
  EXPECT_EQ(Run(*one, update, {11.0, 1, 10.0}).affected, 1);
  one->Commit();
  EXPECT_EQ(Run(*other, update, {12.0, 1, 10.0}).affected, 0);
  other->Rollback();
  EXPECT_EQ(Value(*one, "SELECT USEDSENDAMNT FROM BUDGETLINES"), Variant(11.0));
}

TEST_F(OdbcFaultsTest, AConnectionThatIsCutIsAClearErrorAndTheSessionIsDropped) {
  const auto session = Open();
  const auto other = Open();
  session->Begin();
  Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('a')");
  const Variant process = Value(*session, "SELECT pg_backend_pid()");
  Run(*other, "SELECT pg_terminate_backend(?)", {process});
  ExpectFault(FaultKind::CannotOpen, 0, "08S01", "The connection to the database was lost",
              [&] { Run(*session, "INSERT INTO BUDGET (BUDGETCODE) VALUES ('b')"); });
  session->Rollback();
  EXPECT_FALSE(session->Usable());
  EXPECT_EQ(Value(*other, "SELECT count(*) FROM BUDGET"), Variant(0));
}

TEST_F(OdbcFaultsTest, NobodyThereIsAnErrorThatShowsNoPassword) {
  ExpectFault(FaultKind::CannotOpen, 4060, "08001", "PWD=***", [&] {
    static_cast<void>(driver_.Open(ConnectionString(
        "Driver=PostgreSQL Unicode;Servername=/nowhere;Port=5432;Database=x;UID=u;PWD=secret")));
  });
  ExpectFault(FaultKind::CannotOpen, 4060, "08001", "Driver=No Such Driver",
              [&] { static_cast<void>(driver_.Open(ConnectionString("Driver=No Such Driver;Database=x"))); });
  ExpectFault(FaultKind::CannotOpen, 4060, "08001", "use 7.4-2",
              [&] { static_cast<void>(Open(";Protocol=7.4-1")); });
}

}  // namespace
}  // namespace talvex::odbc_test
