#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/faults.h"
#include "unit/adapters/sqlite_world.h"

namespace talvex::sqlite_test {
namespace {

using adapters::sqlite::FaultOf;
using adapters::sqlite::IsDamage;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;

class SqliteFaultsTest : public SqliteWorld {};

TEST_F(SqliteFaultsTest, ATakenKeyIsADuplicate) {
  const auto session = OpenNew(
      "CREATE TABLE T (ID INTEGER PRIMARY KEY, C NVARCHAR(50) COLLATE NOCASE UNIQUE);"
      "CREATE TABLE U (A TEXT, B TEXT, PRIMARY KEY (A, B)) WITHOUT ROWID;"
      "INSERT INTO T VALUES (1, 'x'); INSERT INTO U VALUES ('a', 'b')");
  const auto expect = [&](const char* text, const char* part) {
    ExpectFault(FaultKind::Duplicate, 2627, "23000", part, [&] { Run(*session, text); });
  };
  expect("INSERT INTO T VALUES (1, 'y')", "T.ID");
  expect("INSERT INTO T VALUES (2, 'X')", "T.C");
  expect("INSERT INTO U VALUES ('a', 'b')", "U.A, U.B");
}

TEST_F(SqliteFaultsTest, NullWhereAValueMustBe) {
  const auto session = OpenNew("CREATE TABLE T (A INT NOT NULL)");
  ExpectFault(FaultKind::NullNotAllowed, 515, "23000", "T.A",
              [&] { Run(*session, "INSERT INTO T VALUES (NULL)"); });
}

TEST_F(SqliteFaultsTest, AForeignKeyIsAConstraint) {
  const auto session = OpenNew("CREATE TABLE P (A INT PRIMARY KEY); CREATE TABLE C (A INT REFERENCES P (A))");
  ExpectFault(FaultKind::Constraint, 547, "23000", "FOREIGN KEY",
              [&] { Run(*session, "INSERT INTO C VALUES (1)"); });
}

TEST_F(SqliteFaultsTest, ATriggerSaysWhatItRefuses) {
  const auto session = OpenNew(
      "CREATE TABLE T (A INT);"
      "CREATE TRIGGER R BEFORE INSERT ON T WHEN NEW.A > 9 "
      "BEGIN SELECT RAISE(ABORT, 'FK_T: it is referred to'); END;");
  const auto fault = FaultFrom([&] { Run(*session, "INSERT INTO T VALUES (10)"); });
  ASSERT_TRUE(fault.has_value());
  EXPECT_EQ(fault->Kind(), FaultKind::Constraint);
  EXPECT_EQ(fault->NativeError(), 547);
  EXPECT_STREQ(fault->what(), "FK_T: it is referred to");
}

TEST_F(SqliteFaultsTest, ACheckSpeaksWithTheNameOfItsConstraint) {
  const auto session =
      OpenNew("CREATE TABLE T (A TEXT, CONSTRAINT \"T.A takes 3 characters\" CHECK (length(A) <= 3))");
  const auto fault = FaultFrom([&] { Run(*session, "INSERT INTO T VALUES ('four')"); });
  ASSERT_TRUE(fault.has_value());
  EXPECT_EQ(fault->Kind(), FaultKind::ValueRefused);
  EXPECT_EQ(fault->NativeError(), 8152);
  EXPECT_STREQ(fault->what(), "T.A takes 3 characters");
}

TEST_F(SqliteFaultsTest, AValueOfTheWrongTypeForAKeyIsRefused) {
  const auto session = OpenNew("CREATE TABLE T (ID INTEGER PRIMARY KEY)");
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "wrong type",
              [&] { Run(*session, "INSERT INTO T VALUES ('x')"); });
}

TEST_F(SqliteFaultsTest, AnythingElseKeepsTheMessageOfTheDatabase) {
  const auto session = OpenNew("");
  ExpectFault(FaultKind::Other, 1, "HY000", "no such table: T", [&] { Run(*session, "SELECT * FROM T"); });
  ExpectFault(FaultKind::Other, 1, "HY000", "syntax error", [&] { Run(*session, "SELEC 1"); });
  EXPECT_TRUE(session->Usable());
}

TEST_F(SqliteFaultsTest, ADatabaseThatCannotBeWrittenSaysSo) {
  const auto session = OpenNew("CREATE TABLE T (A INT)");
  Run(*session, "PRAGMA query_only = 1");
  ExpectFault(FaultKind::Other, 8, "HY000", "cannot be written to",
              [&] { Run(*session, "INSERT INTO T VALUES (1)"); });
  EXPECT_TRUE(session->Usable());
}

TEST_F(SqliteFaultsTest, ADiskWithoutRoomSaysSoAndTheTransactionIsOver) {
  const auto session = OpenNew("CREATE TABLE T (A TEXT)");
  Run(*session, "PRAGMA max_page_count = 4");
  session->Begin();
  ExpectFault(FaultKind::Other, 13, "HY000", "no room left", [&] {
    for (int i = 0; i < 10; ++i) Run(*session, "INSERT INTO T VALUES (?)", {std::string(3000, 'x')});
  });
  session->Rollback();
  EXPECT_TRUE(session->Usable());
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(0));
}

TEST_F(SqliteFaultsTest, EveryCodeHasItsMeaning) {
  const auto expect = [](int code, FaultKind kind, std::int32_t native_error, const char* state) {
    const Fault fault = FaultOf(code, "message");
    EXPECT_EQ(fault.Kind(), kind) << code;
    EXPECT_EQ(fault.NativeError(), native_error) << code;
    EXPECT_EQ(fault.SqlState(), state) << code;
    EXPECT_TRUE(std::string_view(fault.what()).ends_with("message")) << code;
  };
  expect(SQLITE_BUSY, FaultKind::Conflict, 1205, "40001");
  expect(SQLITE_BUSY_SNAPSHOT, FaultKind::Conflict, 1205, "40001");
  expect(SQLITE_LOCKED, FaultKind::Conflict, 1205, "40001");
  expect(SQLITE_LOCKED_SHAREDCACHE, FaultKind::Conflict, 1205, "40001");
  expect(SQLITE_CANTOPEN_ISDIR, FaultKind::CannotOpen, 4060, "08001");
  expect(SQLITE_NOTADB, FaultKind::CannotOpen, 4060, "08001");
  expect(SQLITE_READONLY_DBMOVED, FaultKind::Other, SQLITE_READONLY_DBMOVED, "HY000");
  expect(SQLITE_IOERR_WRITE, FaultKind::Other, SQLITE_IOERR_WRITE, "HY000");
  expect(SQLITE_CORRUPT_INDEX, FaultKind::Other, SQLITE_CORRUPT_INDEX, "HY000");
  expect(SQLITE_CONSTRAINT_UNIQUE, FaultKind::Duplicate, 2627, "23000");
  expect(SQLITE_CONSTRAINT_ROWID, FaultKind::Duplicate, 2627, "23000");
  expect(SQLITE_CONSTRAINT_TRIGGER, FaultKind::Constraint, 547, "23000");
  expect(SQLITE_CONSTRAINT_DATATYPE, FaultKind::ValueRefused, 8152, "22001");
  expect(SQLITE_TOOBIG, FaultKind::ValueRefused, 8152, "22001");
  expect(SQLITE_NOMEM, FaultKind::Other, SQLITE_NOMEM, "HY000");
}

TEST_F(SqliteFaultsTest, DamageIsToldFromOtherFailures) {
  for (const int code :
       {SQLITE_CORRUPT, SQLITE_CORRUPT_INDEX, SQLITE_NOTADB, SQLITE_IOERR, SQLITE_IOERR_READ}) {
    EXPECT_TRUE(IsDamage(code)) << code;
  }
  for (const int code : {SQLITE_BUSY, SQLITE_FULL, SQLITE_READONLY, SQLITE_CONSTRAINT_CHECK, SQLITE_ERROR}) {
    EXPECT_FALSE(IsDamage(code)) << code;
  }
}

TEST_F(SqliteFaultsTest, ASessionWithADamagedFileIsNotUsedAgain) {
  Create(
      "CREATE TABLE T (A TEXT); WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N WHERE I < "
      "500) INSERT INTO T SELECT printf('%0500d', I) FROM N");
  const auto size = std::filesystem::file_size(DatabasePath());
  {
    std::fstream file(DatabasePath(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4096);
    file << std::string(size - 4096, '\xff');
  }
  const auto session = Open();
  EXPECT_TRUE(session->Usable());
  ExpectFault(FaultKind::Other, SQLITE_CORRUPT, "HY000", "damaged",
              [&] { Run(*session, "SELECT COUNT(A) FROM T"); });
  EXPECT_FALSE(session->Usable());
}

TEST_F(SqliteFaultsTest, ATransactionIsKeptOrUndoneAsAWhole) {
  const auto session = OpenNew("CREATE TABLE T (A INT)");
  session->Begin();
  Run(*session, "INSERT INTO T VALUES (1)");
  session->Rollback();
  session->Begin();
  Run(*session, "INSERT INTO T VALUES (2)");
  session->Commit();
  EXPECT_EQ(Value(*Open(), "SELECT A FROM T"), Variant(2));
}

TEST_F(SqliteFaultsTest, TransactionsDoNotNest) {
  const auto session = OpenNew("");
  session->Begin();
  ExpectFault(FaultKind::Other, 0, "25001", "open already", [&] { session->Begin(); });
  EXPECT_FALSE(session->Usable());
  session->Commit();
  ExpectFault(FaultKind::Other, 3902, "25000", "no transaction", [&] { session->Commit(); });
  session->Rollback();
  EXPECT_TRUE(session->Usable());
}

TEST_F(SqliteFaultsTest, NoStatementOpensATransaction) {
  const auto session = OpenNew("");
  ExpectFault(FaultKind::Other, 0, "2D000", "the host does so", [&] { Run(*session, "BEGIN"); });
  EXPECT_TRUE(session->Usable());
  session->Begin();
  EXPECT_FALSE(session->Usable());
  ExpectFault(FaultKind::Other, 0, "25001", "open already", [&] { session->Begin(); });
  session->Rollback();
  EXPECT_TRUE(session->Usable());
}

TEST_F(SqliteFaultsTest, NothingIsRunAloneWhenTheDatabaseHasUndoneTheTransaction) {
  const auto session = OpenNew(
      "CREATE TABLE T (A INT); CREATE TRIGGER R BEFORE INSERT ON T WHEN NEW.A > 9 "
      "BEGIN SELECT RAISE(ROLLBACK, 'too much'); END;");
  session->Begin();
  Run(*session, "INSERT INTO T VALUES (1)");
  ExpectFault(FaultKind::Constraint, 547, "23000", "too much",
              [&] { Run(*session, "INSERT INTO T VALUES (10)"); });
  ExpectFault(FaultKind::Other, 3930, "25000", "undone", [&] { Run(*session, "INSERT INTO T VALUES (2)"); });
  ExpectFault(FaultKind::Other, 3930, "25000", "undone", [&] { session->Commit(); });
  EXPECT_TRUE(session->Usable());
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(0));
}

TEST_F(SqliteFaultsTest, ACommitThatFailsUndoesTheTransaction) {
  const auto session = OpenNew(
      "CREATE TABLE P (A INT PRIMARY KEY);"
      "CREATE TABLE C (A INT REFERENCES P (A) DEFERRABLE INITIALLY DEFERRED)");
  session->Begin();
  Run(*session, "INSERT INTO C VALUES (1)");
  ExpectFault(FaultKind::Constraint, 547, "23000", "FOREIGN KEY", [&] { session->Commit(); });
  EXPECT_TRUE(session->Usable());
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM C"), Variant(0));
}

TEST_F(SqliteFaultsTest, AStatementThatFailsLeavesTheTransactionOpen) {
  const auto session = OpenNew("CREATE TABLE T (A INT UNIQUE)");
  session->Begin();
  Run(*session, "INSERT INTO T VALUES (1)");
  ExpectFault(FaultKind::Duplicate, 2627, "23000", "T.A",
              [&] { Run(*session, "INSERT INTO T VALUES (2), (1)"); });
  session->Commit();
  EXPECT_EQ(Value(*session, "SELECT COUNT(*) FROM T"), Variant(1));
}

TEST_F(SqliteFaultsTest, AWriterThatFindsAnotherOneReportsAConflictAfterItsPatience) {
  const auto first = OpenNew("CREATE TABLE T (A INT)");
  const auto second = Open(";BusyTimeout=50");
  first->Begin();
  Run(*first, "INSERT INTO T VALUES (1)");
  const auto start = std::chrono::steady_clock::now();
  ExpectFault(FaultKind::Conflict, 1205, "40001", "locked", [&] { second->Begin(); });
  ExpectFault(FaultKind::Conflict, 1205, "40001", "locked",
              [&] { Run(*second, "INSERT INTO T VALUES (2)"); });
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(90));
  EXPECT_TRUE(second->Usable());
  EXPECT_EQ(Value(*second, "SELECT COUNT(*) FROM T"), Variant(0)) << "reading is never in anybody's way";
  first->Commit();
  second->Begin();
  Run(*second, "INSERT INTO T VALUES (2)");
  second->Commit();
  EXPECT_EQ(Value(*first, "SELECT COUNT(*) FROM T"), Variant(2));
}

TEST_F(SqliteFaultsTest, AWriterWaitsForAnotherOneToEnd) {
  const auto first = OpenNew("CREATE TABLE T (A INT)");
  first->Begin();
  Run(*first, "INSERT INTO T VALUES (1)");
  auto second = std::async(std::launch::async, [this] {
    const auto session = Open();
    session->Begin();
    Run(*session, "UPDATE T SET A = A + 1");
    session->Commit();
  });
  EXPECT_EQ(second.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  first->Commit();
  second.get();
  EXPECT_EQ(Value(*first, "SELECT A FROM T"), Variant(2));
}

TEST_F(SqliteFaultsTest, NoUpdateOfManyWritersIsLost) {
  Create("CREATE TABLE T (A INT); INSERT INTO T VALUES (0)");
  constexpr int kRounds = 25;
  const auto count_up = [this] {
    const auto session = Open();
    for (int i = 0; i < kRounds; ++i) {
      session->Begin();
      const Variant before = Value(*session, "SELECT A FROM T");
      Run(*session, "UPDATE T SET A = ?", {before.As<std::int32_t>() + 1});
      session->Commit();
    }
  };
  std::vector<std::future<void>> writers;
  for (int i = 0; i < 3; ++i) writers.push_back(std::async(std::launch::async, count_up));
  for (auto& writer : writers) writer.get();
  EXPECT_EQ(Value(*Open(), "SELECT A FROM T"), Variant(3 * kRounds));
}

TEST_F(SqliteFaultsTest, ASnapshotThatIsTooOldIsAConflict) {
  const auto writer = OpenNew("CREATE TABLE T (A INT)");
  adapters::sqlite::Database reader(DatabasePath(), 1000);
  reader.Run("BEGIN; SELECT * FROM T");
  Run(*writer, "INSERT INTO T VALUES (1)");
  ExpectFault(FaultKind::Conflict, 1205, "40001", "locked", [&] { reader.Run("INSERT INTO T VALUES (2)"); });
}

}  // namespace
}  // namespace talvex::sqlite_test
