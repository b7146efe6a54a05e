#include "adapters/suite/outbox.h"

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/posix/system_files.h"
#include "automation/transaction_context.h"
#include "unit/adapters/suite_world.h"

namespace talvex::adapters::suite {
namespace {

using automation::Date;
using automation::TransactionContext;
using suite_test::ErrorOf;
using suite_test::Failing;

class SuiteOutbox : public testing::Test {
 protected:
  [[nodiscard]] std::vector<std::string> Files() const { return files_->In("/inst/outbox"); }
  [[nodiscard]] std::string Log() const {
    const auto found = files_->content.find("/inst/log/errors.jsonl");
    return found == files_->content.end() ? std::string() : found->second;
  }

  std::shared_ptr<suite_test::MemoryFiles> files_ = std::make_shared<suite_test::MemoryFiles>();
  automation::ClassRegistry classes_;
  Outbox outbox_{std::make_shared<Installation>(suite_test::kDirectory)};

 private:
  [[nodiscard]] std::shared_ptr<platform::Environment> World() const {
    auto world = std::make_shared<platform::Environment>();
    world->files = files_;
    world->clock = std::make_shared<platform::FixedClock>(Date::Civil(2026, 11, 21, 14, 30, 5));
    return world;
  }
  platform::Environment::ForThread in_world_{World()};
};

TEST_F(SuiteOutbox, OutsideATransactionAMailIsFinalAtOnce) {
  outbox_.Put("a", "text");
  EXPECT_EQ(Files(), std::vector<std::string>{"a.eml"});
  EXPECT_EQ(files_->content["/inst/outbox/a.eml"], "text");
}

TEST_F(SuiteOutbox, InATransactionAMailIsPendingUntilTheCommit) {
  TransactionContext transaction(classes_);
  outbox_.Put("a", "first");
  outbox_.Put("b", "second");
  EXPECT_EQ(Files(), (std::vector<std::string>{".pending-a", ".pending-b"}));
  EXPECT_TRUE(transaction.Commit());
  EXPECT_EQ(Files(), (std::vector<std::string>{"a.eml", "b.eml"}));
  EXPECT_EQ(files_->content["/inst/outbox/b.eml"], "second");
}

TEST_F(SuiteOutbox, AVoteForAbortTakesTheMailBack) {
  TransactionContext transaction(classes_);
  outbox_.Put("a", "text");
  transaction.SetAbort();
  EXPECT_FALSE(transaction.Commit());
  EXPECT_EQ(Files(), std::vector<std::string>{});
}

TEST_F(SuiteOutbox, ATransactionThatIsLeftTakesTheMailBack) {
  {
    const TransactionContext transaction(classes_);
    outbox_.Put("a", "text");
    EXPECT_EQ(Files().size(), 1U);
  }
  EXPECT_EQ(Files(), std::vector<std::string>{});
}

TEST_F(SuiteOutbox, AMailThatCannotBeWrittenFailsTheCall) {
  files_->before = Failing("WriteNew");
  EXPECT_EQ(ErrorOf([&] { outbox_.Put("a", "text"); }).number, automation::error_number::kFileAccess);
  TransactionContext transaction(classes_);
  EXPECT_EQ(ErrorOf([&] { outbox_.Put("b", "text"); }).number, automation::error_number::kFileAccess);
  EXPECT_TRUE(transaction.Commit());
  EXPECT_EQ(Files(), std::vector<std::string>{});
  EXPECT_EQ(Log(), "");
}

TEST_F(SuiteOutbox, AMailOfTheSameNameIsNeverOverwritten) {
  outbox_.Put("a", "first");
  EXPECT_EQ(ErrorOf([&] { outbox_.Put("a", "second"); }).number,
            automation::error_number::kFileAlreadyExists);
  EXPECT_EQ(files_->content["/inst/outbox/a.eml"], "first");
}

TEST_F(SuiteOutbox, AMailThatCannotBecomeFinalStaysPendingAndIsLogged) {
  TransactionContext transaction(classes_);
  outbox_.Put("a", "text");
  files_->before = Failing("Rename");
  EXPECT_TRUE(transaction.Commit());
  EXPECT_EQ(Files(), std::vector<std::string>{".pending-a"});
  EXPECT_NE(Log().find("No access to /inst/outbox/.pending-a"), std::string::npos) << Log();
}

TEST_F(SuiteOutbox, AnEndOfTransactionSurvivesADiskThatTakesNothing) {
  TransactionContext transaction(classes_);
  outbox_.Put("a", "text");
  files_->before = [](std::string_view call, const std::string& path) {
    throw automation::Error(automation::error_number::kFileAccess, "Test.Files",
                            std::string(call) + " " + path);
  };
  transaction.Rollback();
  EXPECT_EQ(Files(), std::vector<std::string>{".pending-a"});
}

TEST_F(SuiteOutbox, WorksOnTheFileSystemOfTheMachine) {
  const suite_test::TemporaryFolder folder;
  auto world = std::make_shared<platform::Environment>(platform::Environment::Current());
  world->files = std::make_shared<posix::SystemFiles>();
  const platform::Environment::ForThread on_disk(world);
  const Outbox outbox(std::make_shared<Installation>(folder.Path("inst")));
  const auto finish = [&](const std::string& id, bool commit) {
    TransactionContext transaction(classes_);
    outbox.Put(id, "text of " + id);
    EXPECT_TRUE(world->files->Exists(folder.Path("inst/outbox/.pending-" + id)));
    commit ? static_cast<void>(transaction.Commit()) : transaction.Rollback();
    EXPECT_FALSE(world->files->Exists(folder.Path("inst/outbox/.pending-" + id)));
  };
  finish("kept", true);
  finish("taken-back", false);
  EXPECT_EQ(world->files->Read(folder.Path("inst/outbox/kept.eml")), "text of kept");
  EXPECT_FALSE(world->files->Exists(folder.Path("inst/outbox/taken-back.eml")));
}

TEST_F(SuiteOutbox, IdsSortByTimeAndThenByTheirOrder) {
  const Date noon = Date::Civil(2026, 11, 21, 12, 0, 0);
  std::vector<std::string> ids;
  for (int i = 0; i < 1000; ++i) ids.push_back(Outbox::NewId(noon));
  EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
  EXPECT_LT(Outbox::NewId(Date::Civil(2026, 11, 21, 11, 59, 59)), ids.front());
  EXPECT_TRUE(ids.front().starts_with("20261121T120000-")) << ids.front();
}

TEST_F(SuiteOutbox, IdsAreUniqueAcrossThreads) {
  const Date noon = Date::Civil(2026, 11, 21, 12, 0, 0);
  std::vector<std::string> first(2000);
  std::vector<std::string> second(2000);
  const auto fill = [noon](std::vector<std::string>& ids) {
    std::generate(ids.begin(), ids.end(), [noon] { return Outbox::NewId(noon); });
  };
  std::thread other(fill, std::ref(first));
  fill(second);
  other.join();
  std::set<std::string> all(first.begin(), first.end());
  all.insert(second.begin(), second.end());
  EXPECT_EQ(all.size(), 4000U);
}

}  // namespace
}  // namespace talvex::adapters::suite
