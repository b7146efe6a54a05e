#include "support/failing_driver.h"

#include <gtest/gtest.h>

#include "adapters/sqlite/driver.h"
#include "support/temporary_folder.h"

namespace talvex::test {
namespace {

using automation::Variant;
using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::kAllRows;
using platform::database::Session;

class FailingDriverTest : public ::testing::Test {
 protected:
  FailingDriverTest() { adapters::sqlite::CreateDatabase(folder_.Path("db"), "CREATE TABLE T (A INT)"); }

  std::unique_ptr<Session> Open() { return driver_.Open(ConnectionString("Database=" + folder_.Path("db"))); }
  static void Run(Session& session, std::string_view text) {
    static_cast<void>(session.Execute(text, {}, kAllRows));
  }
  static Variant Count(Session& session) {
    return session.Execute("SELECT COUNT(*) FROM T", {}, kAllRows).rows.Value(0, 0);
  }
  static Fault Busy() { return {FaultKind::Conflict, 1205, "40001", "busy"}; }

  TemporaryFolder folder_;
  FailingDriver driver_{std::make_shared<adapters::sqlite::SqliteDriver>([] { return automation::Date(); })};
};

TEST_F(FailingDriverTest, FailsTheNthStatementThatContainsThePartOnce) {
  const auto session = Open();
  driver_.Script().FailAt("INSERT", 2, Busy());
  Run(*session, "INSERT INTO T VALUES (1)");
  Run(*session, "DELETE FROM T WHERE A = 7");
  EXPECT_THROW(Run(*session, "INSERT INTO T VALUES (2)"), Fault);
  Run(*session, "INSERT INTO T VALUES (3)");
  EXPECT_EQ(Count(*session), Variant(2));
  EXPECT_EQ(driver_.Script().Count("INSERT"), 3U);
  EXPECT_EQ(driver_.Script().Texts().at(1), "INSERT INTO T VALUES (1)");
}

TEST_F(FailingDriverTest, SeveralPlansCountEachForItself) {
  const auto session = Open();
  driver_.Script().FailAt("INSERT", 1, Busy());
  driver_.Script().FailAt("VALUES (2)", 2, Busy());
  EXPECT_THROW(Run(*session, "INSERT INTO T VALUES (2)"), Fault);
  EXPECT_THROW(Run(*session, "INSERT INTO T VALUES (2)"), Fault);
  Run(*session, "INSERT INTO T VALUES (2)");
  EXPECT_EQ(Count(*session), Variant(1));
}

TEST_F(FailingDriverTest, OpeningBeginningAndCommittingFailToo) {
  driver_.Script().FailAt("OPEN", 1, Fault(FaultKind::CannotOpen, 4060, "08001", "closed"));
  EXPECT_THROW(static_cast<void>(Open()), Fault);
  const auto session = Open();
  driver_.Script().FailAt("BEGIN", 1, Busy());
  EXPECT_THROW(session->Begin(), Fault);
  driver_.Script().FailAt("COMMIT", 1, Busy());
  session->Begin();
  Run(*session, "INSERT INTO T VALUES (1)");
  EXPECT_THROW(session->Commit(), Fault);
  EXPECT_TRUE(session->Usable());
  EXPECT_EQ(Count(*session), Variant(0));
}

TEST_F(FailingDriverTest, WithoutAPlanItIsTheDriverBehindIt) {
  const auto session = Open();
  session->Begin();
  Run(*session, "INSERT INTO T VALUES (1)");
  EXPECT_FALSE(session->Usable());
  session->Rollback();
  EXPECT_EQ(Count(*session), Variant(0));
  ASSERT_NE(session->Table("T"), nullptr);
  driver_.Script().ForgetTexts();
  EXPECT_EQ(driver_.Script().Count(""), 0U);
}

}  // namespace
}  // namespace talvex::test
