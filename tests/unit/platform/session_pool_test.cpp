#include "platform/database/session_pool.h"

#include <gtest/gtest.h>

#include "automation/transaction_context.h"
#include "support/fake_database.h"

namespace talvex::test {

namespace {

using automation::ClassRegistry;
using automation::TransactionContext;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::SessionPool;

using Events = std::vector<std::string>;

class SessionPoolTest : public ::testing::Test {
 protected:
  FakeWorld world_;
  SessionPool& pool_ = *world_.sessions;
  Events& events_ = world_.database->events;
  ClassRegistry classes_;
};

TEST_F(SessionPoolTest, GivesASessionThatCameBackToTheNextCaller) {
  const auto* const first = pool_.Acquire("Database=a").get();
  EXPECT_EQ(pool_.Acquire("Database=a").get(), first);
  EXPECT_EQ(events_, Events{"open Database=a"});
}

TEST_F(SessionPoolTest, OpensAnotherSessionWhileOneIsInUse) {
  const auto first = pool_.Acquire("Database=a");
  const auto second = pool_.Acquire("Database=a");
  EXPECT_NE(first, second);
  EXPECT_EQ(world_.database->Count("open Database=a"), 2U);
}

TEST_F(SessionPoolTest, KeepsSessionsOfDifferentStringsApart) {
  pool_.Acquire("Database=a").reset();
  pool_.Acquire("Database=b").reset();
  EXPECT_EQ(events_, (Events{"open Database=a", "open Database=b"}));
}

TEST_F(SessionPoolTest, ClosesASessionThatCannotServeAgain) {
  world_.database->usable = false;
  pool_.Acquire("Database=a").reset();
  pool_.Acquire("Database=a").reset();
  EXPECT_EQ(events_, (Events{"open Database=a", "close", "open Database=a", "close"}));
}

TEST_F(SessionPoolTest, ASessionThatCannotServeAgainTakesItsIdleNeighboursAlong) {
  auto broken = pool_.Acquire("Database=a");
  pool_.Acquire("Database=a").reset();
  pool_.Acquire("Database=b").reset();
  world_.database->usable = false;
  broken.reset();
  EXPECT_EQ(world_.database->Count("close"), 2U);
  pool_.Acquire("Database=b").reset();
  EXPECT_EQ(world_.database->Count("open Database=b"), 1U);
}

TEST_F(SessionPoolTest, KeepsAtMostSixteenIdleSessions) {
  std::vector<std::shared_ptr<platform::database::Session>> sessions;
  for (int i = 0; i < 20; ++i) sessions.push_back(pool_.Acquire("Database=a"));
  sessions.clear();
  EXPECT_EQ(world_.database->Count("close"), 4U);
}

TEST_F(SessionPoolTest, ATransactionBeginsItsSessionAsTheKindThatItIs) {
  // What a query has done beside reading, such as making a table, is not kept.
  for (const auto& [kind, begin, end] :
       {std::tuple{automation::TransactionKind::Writing, "begin", "commit"},
        std::tuple{automation::TransactionKind::Reading, "begin reading", "rollback"}}) {
    events_.clear();
    TransactionContext context(classes_, kind);
    const auto session = pool_.Acquire("Database=" + std::string(begin));
    EXPECT_TRUE(context.Commit());
    EXPECT_EQ(events_, (Events{"open Database=" + std::string(begin), begin, end}));
  }
}

TEST_F(SessionPoolTest, ASessionMayOutliveThePool) {
  auto pool = std::make_shared<SessionPool>();
  pool->AddDriver("", world_.database);
  auto session = pool->Acquire("Database=a");
  pool.reset();
  EXPECT_EQ(events_, Events{"open Database=a"});
  session.reset();
  EXPECT_EQ(events_, (Events{"open Database=a", "close"}));
}

TEST_F(SessionPoolTest, ChoosesTheDriverByItsNameInAnyCase) {
  const auto special = std::make_shared<FakeDatabase>();
  pool_.AddDriver("SQLite", special);
  pool_.Acquire("driver=sqlite;Database=a").reset();
  pool_.Acquire("driver=other;Database=a").reset();
  EXPECT_EQ(special->events, Events{"open driver=sqlite;Database=a"});
  EXPECT_EQ(events_, Events{"open driver=other;Database=a"});
}

TEST_F(SessionPoolTest, WithoutADriverFailsAndHidesThePassword) {
  SessionPool pool;
  try {
    static_cast<void>(pool.Acquire("Driver=none;PWD=s3cret"));
    FAIL() << "nothing was raised";
  } catch (const Fault& fault) {
    EXPECT_EQ(fault.Kind(), FaultKind::CannotOpen);
    EXPECT_EQ(std::string(fault.what()).find("s3cret"), std::string::npos);
    EXPECT_NE(std::string(fault.what()).find("Driver=none"), std::string::npos);
  }
}

TEST_F(SessionPoolTest, ATransactionHasOneSessionForAllOfItsCallers) {
  TransactionContext context(classes_);
  const auto first = pool_.Acquire("Database=a");
  EXPECT_EQ(pool_.Acquire("Database=a"), first);
  EXPECT_EQ(events_, (Events{"open Database=a", "begin"}));
  context.Commit();
  EXPECT_EQ(events_.back(), "commit");
}

TEST_F(SessionPoolTest, ATransactionThatAskedForNoSessionBeginsNothing) {
  TransactionContext context(classes_);
  context.Commit();
  EXPECT_EQ(events_, Events{});
}

TEST_F(SessionPoolTest, AnAbortVoteRollsTheSessionBack) {
  TransactionContext context(classes_);
  pool_.Acquire("Database=a").reset();
  context.SetAbort();
  context.Commit();
  EXPECT_EQ(events_, (Events{"open Database=a", "begin", "rollback"}));
}

TEST_F(SessionPoolTest, TheSessionOfATransactionServesAgainAfterIt) {
  {
    TransactionContext context(classes_);
    pool_.Acquire("Database=a").reset();
    context.Commit();
  }
  pool_.Acquire("Database=a").reset();
  EXPECT_EQ(events_, (Events{"open Database=a", "begin", "commit"}));
}

TEST_F(SessionPoolTest, AnotherDatabaseInATransactionRaises5AndHidesThePassword) {
  TransactionContext context(classes_);
  pool_.Acquire("Database=a").reset();
  const Raised raised = RaisedBy([&] { static_cast<void>(pool_.Acquire("Database=b;PWD=s3cret")); });
  EXPECT_EQ(raised.number, 5);
  EXPECT_NE(raised.description.find("Database=b;PWD=***"), std::string::npos);
  EXPECT_EQ(raised.description.find("s3cret"), std::string::npos);
}

TEST_F(SessionPoolTest, AConflictAtTheCommitIsToldToTheTransaction) {
  TransactionContext context(classes_);
  pool_.Acquire("Database=a").reset();
  world_.database->Fail("commit", Fault(FaultKind::Conflict, 1205, "40001", "deadlock"));
  EXPECT_EQ(RaisedBy([&] { context.Commit(); }).number, -2147467259);
  EXPECT_TRUE(context.HadConflict());
}

}  // namespace

}  // namespace talvex::test
