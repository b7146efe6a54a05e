#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "unit/adapters/sqlite_world.h"

namespace talvex::sqlite_test {
namespace {

using automation::Date;
using automation::Variant;
using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;

class SqliteDriverTest : public SqliteWorld {
 protected:
  void ExpectCannotOpen(const std::string& database, const std::string& part) {
    ExpectFault(FaultKind::CannotOpen, 4060, "08001", part, [&] {
      static_cast<void>(driver_.Open(ConnectionString("Driver=SQLite;Database=" + database)));
    });
  }
};

TEST_F(SqliteDriverTest, AMissingFileIsNamedAndNotMade) {
  ExpectCannotOpen(DatabasePath(), DatabasePath() + ": there is no such file");
  EXPECT_FALSE(std::filesystem::exists(DatabasePath()));
}

TEST_F(SqliteDriverTest, NamesThatTheLibraryTakesForSomethingElseAreFiles) {
  ExpectCannotOpen("", "there is no such file");
  ExpectCannotOpen(":memory:", ":memory:: there is no such file");
  ExpectCannotOpen("file::memory:?mode=memory", "there is no such file");
  ExpectCannotOpen("file:" + DatabasePath() + "?mode=rwc", "there is no such file");
  EXPECT_FALSE(std::filesystem::exists(DatabasePath()));
}

TEST_F(SqliteDriverTest, APathWithANulCharacterIsRefused) {
  Create("");
  ExpectCannotOpen(DatabasePath() + std::string("\0.db", 4), "NUL");
}

TEST_F(SqliteDriverTest, AFolderIsNoDatabase) {
  std::filesystem::create_directory(DatabasePath());
  ExpectCannotOpen(DatabasePath(), DatabasePath() + ": it is not a file");
}

TEST_F(SqliteDriverTest, AFileOfAnotherKindIsNoDatabase) {
  const std::string text(2000, 'x');
  std::ofstream(DatabasePath()) << text;
  ExpectCannotOpen(DatabasePath(), DatabasePath() + ": file is not a database");
  EXPECT_EQ(std::filesystem::file_size(DatabasePath()), text.size());
}

TEST_F(SqliteDriverTest, ABusyTimeoutThatIsNoNumberIsRefused) {
  Create("");
  for (const std::string value : {"soon", "10ms", "-1", "99999999999"}) {
    ExpectFault(FaultKind::CannotOpen, 4060, "08001", value,
                [&] { static_cast<void>(Open(";BusyTimeout=" + value)); });
  }
  EXPECT_EQ(Value(*Open(";BusyTimeout=250"), "PRAGMA busy_timeout"), Variant(250));
  EXPECT_EQ(Value(*Open(), "PRAGMA busy_timeout"), Variant(5000));
}

TEST_F(SqliteDriverTest, SessionsAreSafeAgainstCrashesAndHoldForeignKeys) {
  Create("");
  const auto session = Open();
  EXPECT_EQ(Value(*session, "PRAGMA journal_mode"), Variant("wal"));
  EXPECT_EQ(Value(*session, "PRAGMA synchronous"), Variant(2));
  EXPECT_EQ(Value(*session, "PRAGMA foreign_keys"), Variant(1));
  EXPECT_EQ(Value(*session, "PRAGMA trusted_schema"), Variant(0));
}

TEST_F(SqliteDriverTest, DoubleQuotesNameColumnsAndNeverStandForTexts) {
  const auto session = OpenNew("CREATE TABLE T (A TEXT); INSERT INTO T VALUES ('x');");
  EXPECT_EQ(Value(*session, "SELECT \"A\" FROM T WHERE [A] = 'x'"), Variant("x"));
  ExpectFault(FaultKind::Other, 1, "HY000", "no such column: x",
              [&] { Run(*session, "SELECT A FROM T WHERE A = \"x\""); });
  ExpectFault(FaultKind::Other, 1, "HY000", "x",
              [&] { Run(*session, "CREATE INDEX I ON T (A) WHERE A = \"x\""); });
}

TEST_F(SqliteDriverTest, AnInstallationIsMadeWithItsTables) {
  Create(
      "CREATE TABLE T (A INT); BEGIN; INSERT INTO T VALUES (7); COMMIT;\n"
      "CREATE TRIGGER R AFTER INSERT ON T BEGIN UPDATE T SET A = 0; SELECT 1; END;");
  EXPECT_EQ(Value(*Open(), "SELECT A FROM T"), Variant(7));
  EXPECT_FALSE(std::filesystem::exists(DatabasePath() + "-wal"));
}

TEST_F(SqliteDriverTest, AnInstallationNeverReplacesAFile) {
  Create("CREATE TABLE T (A INT)");
  ExpectFault(FaultKind::CannotOpen, 4060, "08001", DatabasePath() + ": File exists", [&] { Create(""); });
  EXPECT_EQ(Value(*Open(), "SELECT COUNT(*) FROM T"), Variant(0));
}

TEST_F(SqliteDriverTest, NothingIsLeftOfAnInstallationThatFails) {
  ExpectFault(FaultKind::Other, 1, "HY000", "no such table",
              [&] { Create("CREATE TABLE T (A INT); DROP TABLE U"); });
  EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::path(DatabasePath()).parent_path()));
  ExpectFault(FaultKind::Other, 0, "25000", "transaction open",
              [&] { Create("BEGIN; CREATE TABLE T (A INT);"); });
  EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::path(DatabasePath()).parent_path()));
}

TEST_F(SqliteDriverTest, GetDateFollowsTheClockTimeOfDayIncluded) {
  Create("");
  const auto session = Open();
  EXPECT_EQ(Value(*session, "SELECT GETDATE()"), Variant("2026-03-16T14:30:05"));
  now_ = Date::Civil(2027, 1, 2);
  EXPECT_EQ(Value(*session, "select getdate()"), Variant("2027-01-02T00:00:00"));
}

TEST_F(SqliteDriverTest, GetDateComparesWithStoredDates) {
  const auto session = OpenNew(
      "CREATE TABLE T (A INT, D DATETIME);"
      "INSERT INTO T VALUES (1, '2026-03-16T14:30:04'), (2, '2026-03-16T14:30:06')");
  EXPECT_EQ(Value(*session, "SELECT A FROM T WHERE D <= GETDATE()"), Variant(1));
  EXPECT_EQ(Value(*session, "SELECT A FROM T WHERE D>= GETDATE()"), Variant(2));
}

TEST_F(SqliteDriverTest, GetDateStandsStillDuringAStatement) {
  adapters::sqlite::SqliteDriver ticking([this] {
    now_ = Date::FromSeconds(now_.Seconds() + 1);
    return now_;
  });
  Create("CREATE TABLE T (A INT); INSERT INTO T VALUES (1), (2), (3)");
  const auto session = ticking.Open(ConnectionString("Database=" + DatabasePath()));
  EXPECT_EQ(Value(*session, "SELECT COUNT(DISTINCT GETDATE() || A) - COUNT(DISTINCT A) FROM T"), Variant(0));
  EXPECT_EQ(Value(*session, "SELECT MIN(GETDATE()) = MAX(GETDATE()) FROM T"), Variant(1));
  EXPECT_EQ(Value(*session, "SELECT GETDATE()"), Variant("2026-03-16T14:30:08"));
}

TEST_F(SqliteDriverTest, AClockThatFailsFailsTheStatementAlone) {
  adapters::sqlite::SqliteDriver broken([]() -> Date { throw std::runtime_error("the clock has stopped"); });
  Create("");
  const auto session = broken.Open(ConnectionString("Database=" + DatabasePath()));
  ExpectFault(FaultKind::Other, 1, "HY000", "the clock has stopped",
              [&] { Run(*session, "SELECT GETDATE()"); });
  EXPECT_EQ(Value(*session, "SELECT 1"), Variant(1));
}

}  // namespace
}  // namespace talvex::sqlite_test
