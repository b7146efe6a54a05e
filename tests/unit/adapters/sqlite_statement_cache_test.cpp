#include "adapters/sqlite/statement_cache.h"

#include "unit/adapters/sqlite_world.h"

namespace talvex::sqlite_test {
namespace {

using adapters::sqlite::StatementCache;
using automation::Variant;
using platform::database::FaultKind;

class SqliteStatementCacheTest : public SqliteWorld {
 protected:
  std::uint64_t Compiled() const { return driver_.Counters().compiled; }
  std::uint64_t Runs() const { return driver_.Counters().run; }
};

TEST_F(SqliteStatementCacheTest, TextsThatDifferInQuotedTextsOnlyAreCompiledOnce) {
  const auto session =
      OpenNew("CREATE TABLE T (A NVARCHAR(50), B INT); INSERT INTO T VALUES ('x', 1), ('y', 2)");
  EXPECT_EQ(Value(*session, "SELECT B FROM T WHERE A='x'"), Variant(1));
  EXPECT_EQ(Value(*session, "SELECT B FROM T WHERE A='y'"), Variant(2));
  EXPECT_EQ(Value(*session, "SELECT B FROM T WHERE A=N'x'"), Variant(1));
  EXPECT_EQ(Value(*session, "SELECT B FROM T WHERE A=?", {"y"}), Variant(2));
  EXPECT_EQ(Compiled(), 1U);
  EXPECT_EQ(Runs(), 4U);
  Run(*session, "SELECT B FROM T WHERE B=1");
  EXPECT_EQ(Compiled(), 2U);
  EXPECT_EQ(Runs(), 5U);
}

TEST_F(SqliteStatementCacheTest, EverySessionCompilesForItself) {
  const auto first = OpenNew("CREATE TABLE T (A INT)");
  const auto second = Open();
  Run(*first, "SELECT * FROM T");
  Run(*second, "SELECT * FROM T");
  EXPECT_EQ(Compiled(), 2U);
}

TEST_F(SqliteStatementCacheTest, AStatementThatFailedIsReadyForItsNextRun) {
  const auto session = OpenNew("CREATE TABLE T (A NVARCHAR(50) UNIQUE, B INT)");
  Run(*session, "INSERT INTO T VALUES ('x', ?)", {1});
  ExpectFault(FaultKind::Duplicate, 2627, "23000", "",
              [&] { Run(*session, "INSERT INTO T VALUES ('x', ?)", {2}); });
  ExpectFault(FaultKind::ValueRefused, 8152, "22001", "",
              [&] { Run(*session, "INSERT INTO T VALUES ('y', ?)", {"\xff"}); });
  Run(*session, "INSERT INTO T VALUES ('y', ?)", {3});
  EXPECT_EQ(Compiled(), 1U);
  EXPECT_EQ(Value(*session, "SELECT B FROM T WHERE A='y'"), Variant(3));
}

TEST_F(SqliteStatementCacheTest, TheStatementUsedLeastRecentlyMakesRoom) {
  const auto session = OpenNew("CREATE TABLE T (A INT)");
  const auto run = [&](std::size_t number) {
    Run(*session, "SELECT A FROM T WHERE A=" + std::to_string(number));
  };
  for (std::size_t i = 0; i < StatementCache::kMostStatements; ++i) run(i);
  EXPECT_EQ(Compiled(), StatementCache::kMostStatements);
  run(0);
  EXPECT_EQ(Compiled(), StatementCache::kMostStatements);
  run(StatementCache::kMostStatements);
  EXPECT_EQ(Compiled(), StatementCache::kMostStatements + 1);
  run(0);
  EXPECT_EQ(Compiled(), StatementCache::kMostStatements + 1) << "it was used a moment ago";
  run(1);
  EXPECT_EQ(Compiled(), StatementCache::kMostStatements + 2) << "it had to make room";
}

TEST_F(SqliteStatementCacheTest, LongTextsAreRunButNotKept) {
  const auto session = OpenNew("CREATE TABLE T (A INT); INSERT INTO T VALUES (1)");
  std::string text = "SELECT A FROM T WHERE A IN (1";
  while (text.size() <= StatementCache::kLongestText) text += ",1";
  text += ")";
  EXPECT_EQ(Value(*session, text), Variant(1));
  EXPECT_EQ(Value(*session, text), Variant(1));
  EXPECT_EQ(Compiled(), 2U);
}

TEST_F(SqliteStatementCacheTest, ManyQuotedTextsAreNoHindrance) {
  const auto session = OpenNew("CREATE TABLE T (A NVARCHAR(50)); INSERT INTO T VALUES ('0'), ('39999')");
  std::string text = "SELECT COUNT(*) FROM T WHERE A IN ('0'";
  for (int i = 1; i < 40000; ++i) text += ",'" + std::to_string(i) + "'";
  EXPECT_EQ(Value(*session, text + ")"), Variant(2));
}

TEST_F(SqliteStatementCacheTest, StatementsAreCompiledAnewAfterTablesWereChanged) {
  const auto session = OpenNew("CREATE TABLE T (A INT)");
  EXPECT_EQ(Run(*session, "INSERT INTO T (A) VALUES (1)").identity, std::nullopt);
  Run(*session, "DROP TABLE T");
  Run(*session, "CREATE TABLE T (ID INTEGER PRIMARY KEY, A INT)");
  EXPECT_EQ(Run(*session, "INSERT INTO T (A) VALUES (1)").identity, 1);
}

}  // namespace
}  // namespace talvex::sqlite_test
