#include "automation/transaction_context.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorNumberOf;
using test::ErrorOf;

using Journal = std::vector<std::string>;

// Writes down what becomes of its work.
class Recorder final : public TransactionContext::Resource {
 public:
  Recorder(std::string name, Journal& journal, bool fails = false)
      : name_(std::move(name)), journal_(journal), fails_(fails) {}

  void Commit() override {
    journal_.push_back("commit " + name_);
    if (fails_) throw Error(-2147217873, "Store", "The work of " + name_ + " cannot be kept");
  }
  void Rollback() noexcept override { journal_.push_back("rollback " + name_); }

 private:
  std::string name_;
  Journal& journal_;
  bool fails_;
};

class TransactionContextTest : public ::testing::Test {
 protected:
  void Enlist(TransactionContext& context, const std::string& name, bool fails = false) {
    context.Enlist(name, std::make_unique<Recorder>(name, journal_, fails));
  }
  void Listen(TransactionContext& context) {
    context.OnCompletion(
        [this](bool committed) { journal_.emplace_back(committed ? "told kept" : "told undone"); });
  }

  ClassRegistry classes_;
  Journal journal_;
};

TEST_F(TransactionContextTest, IsTheThreadsCurrentOneWhileItLives) {
  EXPECT_EQ(TransactionContext::Current(), nullptr);
  {
    const TransactionContext context(classes_);
    EXPECT_EQ(TransactionContext::Current(), &context);
    TransactionContext* seen_there = TransactionContext::Current();
    std::thread([&] { seen_there = TransactionContext::Current(); }).join();
    EXPECT_EQ(seen_there, nullptr);
  }
  EXPECT_EQ(TransactionContext::Current(), nullptr);
  const TransactionContext next(classes_);
  EXPECT_EQ(TransactionContext::Current(), &next);
}

TEST_F(TransactionContextTest, RefusesASecondOneOnTheSameThread) {
  TransactionContext outer(classes_);
  Enlist(outer, "a");
  EXPECT_EQ(ErrorNumberOf([&] { const TransactionContext inner(classes_); }), 5);
  EXPECT_EQ(TransactionContext::Current(), &outer);
  EXPECT_TRUE(journal_.empty());
  EXPECT_TRUE(outer.Commit());
}

TEST_F(TransactionContextTest, OneVoteForAbortDecides) {
  struct Row {
    std::string votes;  // c: complete, a: abort.
    bool committed;
  };
  const Row rows[] = {{"", true},    {"c", true},   {"cc", true},   {"a", false},
                      {"ca", false}, {"ac", false}, {"acc", false}, {"cac", false}};
  for (const Row& row : rows) {
    journal_.clear();
    TransactionContext context(classes_);
    Enlist(context, "x");
    for (const char vote : row.votes) vote == 'a' ? context.SetAbort() : context.SetComplete();
    EXPECT_EQ(context.Aborted(), !row.committed) << row.votes;
    EXPECT_EQ(context.Commit(), row.committed) << row.votes;
    EXPECT_EQ(journal_, Journal{row.committed ? "commit x" : "rollback x"}) << row.votes;
  }
}

TEST_F(TransactionContextTest, CommitsResourcesInTheirOrderThenTellsTheOutcomeOnce) {
  {
    TransactionContext context(classes_);
    Listen(context);
    Enlist(context, "a");
    Enlist(context, "b");
    Listen(context);
    EXPECT_TRUE(context.Commit());
    EXPECT_EQ(journal_, (Journal{"commit a", "commit b", "told kept", "told kept"}));
  }
  EXPECT_EQ(journal_.size(), 4U);
}

TEST_F(TransactionContextTest, AbortRollsBackEveryResourceAndTellsTheOutcomeOnce) {
  {
    TransactionContext context(classes_);
    Enlist(context, "a");
    Listen(context);
    Enlist(context, "b");
    context.SetAbort();
    EXPECT_FALSE(context.Commit());
    EXPECT_EQ(journal_, (Journal{"rollback a", "rollback b", "told undone"}));
    context.Rollback();
  }
  EXPECT_EQ(journal_.size(), 3U);
}

TEST_F(TransactionContextTest, CommitThatFailsUndoesAllAndRaises) {
  struct Row {
    std::string failing;
    Journal journal;
  };
  const Row rows[] = {{"a", {"commit a", "rollback a", "rollback b", "told undone"}},
                      {"b", {"commit a", "commit b", "rollback a", "rollback b", "told undone"}}};
  for (const Row& row : rows) {
    journal_.clear();
    {
      TransactionContext context(classes_);
      for (const char* name : {"a", "b"}) Enlist(context, name, row.failing == name);
      Listen(context);
      const ErrorState error = ErrorOf([&] { context.Commit(); });
      EXPECT_EQ(error.number, -2147217873);
      EXPECT_EQ(error.source, "Store");
      EXPECT_EQ(error.description, "The work of " + row.failing + " cannot be kept");
      EXPECT_EQ(journal_, row.journal);
    }
    EXPECT_EQ(journal_, row.journal);
  }
}

TEST_F(TransactionContextTest, DestructionRollsBackWhatWasNotEnded) {
  {
    TransactionContext context(classes_);
    Enlist(context, "a");
    Listen(context);
    context.SetComplete();
  }
  EXPECT_EQ(journal_, (Journal{"rollback a", "told undone"}));
}

TEST_F(TransactionContextTest, ExceptionThroughTheContextRollsBack) {
  EXPECT_EQ(ErrorNumberOf([&] {
              TransactionContext context(classes_);
              Enlist(context, "a");
              throw Error(13, "Body", "Type mismatch");
            }),
            13);
  EXPECT_EQ(journal_, Journal{"rollback a"});
  EXPECT_EQ(TransactionContext::Current(), nullptr);
}

TEST_F(TransactionContextTest, WhatWasRolledBackCannotBeCommittedAfterwards) {
  TransactionContext context(classes_);
  Enlist(context, "a");
  context.Rollback();
  EXPECT_EQ(journal_, Journal{"rollback a"});
  EXPECT_EQ(TransactionContext::Current(), &context);
  EXPECT_FALSE(context.Commit());
  EXPECT_EQ(journal_.size(), 1U);
}

TEST_F(TransactionContextTest, WhatIsEnlistedAfterTheEndIsRolledBack) {
  {
    TransactionContext context(classes_);
    EXPECT_TRUE(context.Commit());
    Enlist(context, "late");
  }
  EXPECT_EQ(journal_, Journal{"rollback late"});
}

TEST_F(TransactionContextTest, CallbackMayAskToBeToldAgain) {
  {
    TransactionContext context(classes_);
    for (int i = 0; i < 3; ++i) {
      context.OnCompletion([&](bool) { Listen(context); });
    }
    EXPECT_TRUE(context.Commit());
  }
  EXPECT_EQ(journal_, (Journal{"told kept", "told kept", "told kept"}));
}

TEST_F(TransactionContextTest, KeepsResourcesByKey) {
  TransactionContext context(classes_);
  EXPECT_EQ(context.Find("store"), nullptr);
  auto resource = std::make_unique<Recorder>("store", journal_);
  auto* const address = resource.get();
  context.Enlist("store", std::move(resource));
  EXPECT_EQ(context.Find("store"), address);
  EXPECT_EQ(context.Find("Store"), nullptr);
  EXPECT_TRUE(context.Commit());
  EXPECT_EQ(context.Find("store"), nullptr);
}

TEST_F(TransactionContextTest, OffersObjectsByName) {
  TransactionContext context(classes_);
  const ErrorState error = ErrorOf([&] { static_cast<void>(context.NamedObject("Application")); });
  EXPECT_EQ(error.number, 5);
  EXPECT_NE(error.description.find("'Application'"), std::string::npos) << error.description;

  const auto first = std::make_shared<Dictionary>();
  const auto second = std::make_shared<Dictionary>();
  context.Offer("Application", first);
  EXPECT_EQ(context.NamedObject("Application"), first);
  context.Offer("Application", second);
  EXPECT_EQ(context.NamedObject("Application"), second);
}

TEST_F(TransactionContextTest, CreatesObjectsByClassName) {
  classes_.Register<Dictionary>();
  const TransactionContext context(classes_);
  EXPECT_EQ(context.CreateInstance("platform.dictionary")->Class().Name(), "Platform.Dictionary");
  const ErrorState error = ErrorOf([&] { static_cast<void>(context.CreateInstance("Platform.Missing")); });
  EXPECT_EQ(error.number, 429);
  EXPECT_NE(error.description.find("'Platform.Missing'"), std::string::npos) << error.description;
}

TEST_F(TransactionContextTest, ConflictIsANoteAndNoVote) {
  TransactionContext context(classes_);
  EXPECT_FALSE(context.HadConflict());
  context.NoteConflict();
  EXPECT_TRUE(context.HadConflict());
  EXPECT_FALSE(context.Aborted());
  EXPECT_TRUE(context.Commit());
}

}  // namespace
}  // namespace talvex::automation
