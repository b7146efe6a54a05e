#include "platform/database/connection.h"

#include <gtest/gtest.h>

#include "automation/transaction_context.h"
#include "support/fake_database.h"

namespace talvex::test {

namespace {

using automation::ClassRegistry;
using automation::TransactionContext;
using automation::Variant;
using platform::database::Connection;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::kAllRows;
using platform::database::ObjectState;
using platform::database::ProviderError;

using Events = std::vector<std::string>;

class ConnectionTest : public ::testing::Test {
 protected:
  FakeWorld world_;
  FakeDatabase& database_ = *world_.database;
  ClassRegistry classes_;
};

std::shared_ptr<ProviderError> FirstError(const Connection& connection) {
  return std::static_pointer_cast<ProviderError>(connection.Errors()->Item(1).As<automation::ObjectRef>());
}

TEST_F(ConnectionTest, OpensWithTheStringGivenOrWithItsProperty) {
  Connection given;
  given.Open("Database=a", std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(given.State(), ObjectState::Open);
  EXPECT_EQ(given.ConnectionText(), "Database=a");
  Connection set;
  set.SetConnectionText("Database=b");
  set.Open(std::nullopt, std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(database_.events, (Events{"open Database=a", "open Database=b"}));
}

TEST_F(ConnectionTest, AddsUserAndPasswordUnlessTheyAreEmpty) {
  Connection with;
  with.Open("Database=a", "carol", "s3cret", -1);
  EXPECT_EQ(database_.events.back(), "open Database=a;UID=carol;PWD=s3cret");
  EXPECT_EQ(with.ConnectionText(), "Database=a");
  with.Close();
  with.Open("Database=a", "a;b", "p}q;Server=elsewhere", -1);
  EXPECT_EQ(database_.events.back(), "open Database=a;UID={a;b};PWD={p}}q;Server=elsewhere}")
      << "a value adds no key of its own";
  Connection without;
  without.Open("Database=a", "", "", -1);
  EXPECT_EQ(database_.events.back(), "open Database=a");
}

TEST_F(ConnectionTest, CannotBeOpenedTwiceOrClosedTwice) {
  const auto connection = world_.Connect();
  EXPECT_EQ(RaisedBy([&] { connection->Open("x", std::nullopt, std::nullopt, std::nullopt); }).number, 3705);
  connection->Close();
  EXPECT_EQ(connection->State(), ObjectState::Closed);
  EXPECT_EQ(RaisedBy([&] { connection->Close(); }).number, 3704);
  EXPECT_EQ(RaisedBy([&] { connection->Execute("DELETE FROM T", nullptr, std::nullopt); }).number, 3704);
}

TEST_F(ConnectionTest, GivesItsSessionBackWhenClosed) {
  world_.Connect("Database=a")->Close();
  world_.Connect("Database=a")->Close();
  EXPECT_EQ(database_.events, Events{"open Database=a"});
}

TEST_F(ConnectionTest, GivesItsSessionBackWhenItIsForgotten) {
  static_cast<void>(world_.Connect("Database=a"));
  static_cast<void>(world_.Connect("Database=a"));
  EXPECT_EQ(database_.events, Events{"open Database=a"});
}

TEST_F(ConnectionTest, ExecuteGivesTheRowsOfAQuery) {
  database_.queries["SELECT A FROM T"] = {{"A"}, {{1}, {2}}};
  const auto rows = world_.Connect()->Execute("SELECT A FROM T", nullptr, std::nullopt);
  EXPECT_EQ(rows->State(), ObjectState::Open);
  EXPECT_EQ(rows->RecordCount(), 2);
  EXPECT_EQ(rows->Value("A"), Variant(1));
}

TEST_F(ConnectionTest, ExecuteCountsWrittenRowsAndGivesAClosedSet) {
  database_.affected = 3;
  Variant affected;
  const auto rows = world_.Connect()->Execute("DELETE FROM T", &affected, -1);
  EXPECT_EQ(affected, Variant(3));
  EXPECT_EQ(rows->State(), ObjectState::Closed);
}

struct FaultRow {
  FaultKind kind;
  std::int32_t number;
  bool conflict;
};

TEST_F(ConnectionTest, EveryFaultHasItsNumberIsKeptInErrorsAndToldWhenItIsAConflict) {
  const FaultRow rows[] = {
      {FaultKind::Duplicate, -2147217873, false},  {FaultKind::NullNotAllowed, -2147217873, false},
      {FaultKind::Constraint, -2147217873, false}, {FaultKind::ValueRefused, -2147217887, false},
      {FaultKind::Conflict, -2147467259, true},    {FaultKind::Other, -2147217900, false},
      {FaultKind::CannotOpen, -2147217843, false},
  };
  for (const FaultRow& row : rows) {
    TransactionContext context(classes_);
    const auto connection = world_.Connect();
    database_.Fail("BROKEN", Fault(row.kind, 2627, "23000", "said the database"));
    const Raised raised = RaisedBy([&] { connection->Run("BROKEN", {}, kAllRows); });
    EXPECT_EQ(raised.number, row.number);
    EXPECT_EQ(raised.description, "said the database");
    ASSERT_EQ(connection->Errors()->Count(), 1);
    const auto error = FirstError(*connection);
    EXPECT_EQ(error->Number, row.number);
    EXPECT_EQ(error->NativeError, 2627);
    EXPECT_EQ(error->SQLState, "23000");
    EXPECT_EQ(error->Description, "said the database");
    EXPECT_EQ(context.HadConflict(), row.conflict);
    database_.StopFailing();
  }
}

TEST_F(ConnectionTest, KeepsTheErrorOfAnOpenThatFailed) {
  database_.Fail("open", Fault(FaultKind::CannotOpen, 4060, "08001", "no such database"));
  Connection connection;
  const Raised raised =
      RaisedBy([&] { connection.Open("Database=a", std::nullopt, std::nullopt, std::nullopt); });
  EXPECT_EQ(raised.number, -2147217843);
  EXPECT_EQ(connection.State(), ObjectState::Closed);
  EXPECT_EQ(FirstError(connection)->NativeError, 4060);
}

TEST_F(ConnectionTest, TheNextOperationClearsErrors) {
  const auto connection = world_.Connect();
  database_.Fail("BROKEN", Fault(FaultKind::Other, 102, "42000", "no"));
  EXPECT_NE(RaisedBy([&] { connection->Run("BROKEN", {}, kAllRows); }).number, 0);
  EXPECT_EQ(connection->Errors()->Count(), 1);
  connection->Run("DELETE FROM T", {}, kAllRows);
  EXPECT_EQ(connection->Errors()->Count(), 0);
}

TEST_F(ConnectionTest, ConnectionsOfOneTransactionShareItsSessionAndDoNotEndIt) {
  TransactionContext context(classes_);
  const auto first = world_.Connect("Database=a");
  const auto second = world_.Connect("Database=a");
  first->Run("DELETE FROM T", {}, kAllRows);
  first->Close();
  second->Run("DELETE FROM U", {}, kAllRows);
  second->Close();
  world_.Connect("Database=a")->Close();
  EXPECT_EQ(database_.events, (Events{"open Database=a", "begin", "DELETE FROM T", "DELETE FROM U"}));
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(world_.Connect("Database=b")); }).number, 5);
}

TEST_F(ConnectionTest, StatementsOutsideATransactionStandOnTheirOwn) {
  const auto connection = world_.Connect("Database=a");
  connection->Run("DELETE FROM T", {}, kAllRows);
  EXPECT_EQ(database_.events, (Events{"open Database=a", "DELETE FROM T"}));
}

TEST_F(ConnectionTest, RunAsOneKeepsAllStepsOrNone) {
  const auto connection = world_.Connect();
  database_.Forget();
  connection->RunAsOne([&] { connection->Run("DELETE FROM T", {}, kAllRows); });
  EXPECT_EQ(database_.events, (Events{"begin", "DELETE FROM T", "commit"}));
  database_.Forget();
  database_.Fail("BROKEN", Fault(FaultKind::Other, 102, "42000", "no"));
  const Raised raised = RaisedBy([&] {
    connection->RunAsOne([&] {
      connection->Run("DELETE FROM T", {}, kAllRows);
      connection->Run("BROKEN", {}, kAllRows);
    });
  });
  EXPECT_EQ(raised.number, -2147217900);
  EXPECT_EQ(database_.events, (Events{"begin", "DELETE FROM T", "BROKEN", "rollback"}));
}

TEST_F(ConnectionTest, RunAsOneInATransactionLeavesItsEndToTheTransaction) {
  TransactionContext context(classes_);
  const auto connection = world_.Connect();
  database_.Forget();
  connection->RunAsOne([&] { connection->Run("DELETE FROM T", {}, kAllRows); });
  EXPECT_EQ(database_.events, Events{"DELETE FROM T"});
  EXPECT_FALSE(context.Aborted());
}

TEST_F(ConnectionTest, RunAsOneThatFailsInATransactionVotesAbort) {
  TransactionContext context(classes_);
  const auto connection = world_.Connect();
  database_.Fail("BROKEN", Fault(FaultKind::Other, 102, "42000", "no"));
  EXPECT_NE(RaisedBy([&] { connection->RunAsOne([&] { connection->Run("BROKEN", {}, kAllRows); }); }).number,
            0);
  EXPECT_TRUE(context.Aborted());
}

TEST_F(ConnectionTest, AChangedRowIsAConflictOfTheTransaction) {
  TransactionContext context(classes_);
  const auto connection = world_.Connect();
  const Raised raised = RaisedBy([&] { connection->RaiseRowChanged("BUDGETLINES"); });
  EXPECT_EQ(raised.number, -2147217864);
  EXPECT_NE(raised.description.find("BUDGETLINES"), std::string::npos);
  EXPECT_TRUE(context.HadConflict());
}

}  // namespace

}  // namespace talvex::test
