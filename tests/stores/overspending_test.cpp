// Two who check and post at the same time: how they overspend a budget, and how they cannot.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "automation/dictionary.h"
#include "automation/transaction_context.h"
#include "ledger/budget_t.h"
#include "platform/environment.h"
#include "stores/budget_tree.h"

namespace talvex::test {

namespace {

using host::Outcome;

automation::Date Day() { return automation::Date::Civil(2026, 3, 15); }

// Whether anybody must approve a further amount, for the budget or one above it.
bool NeedsApproval(const std::string& code, double amount) {
  std::string currency = "EUR";
  std::shared_ptr<automation::Dictionary> holders;
  std::make_shared<BudgetT>()->CheckBudgetStructure(code, Day(), amount, currency, holders);
  return holders->Count() > 0;
}

void Post(const std::string& code, double amount) {
  std::make_shared<BudgetT>()->PostToBudget(code, Day(), amount, "EUR", TalvexType::Approved);
}

// TOP, which has room for 100, above one leaf for each client, which have room enough.
void MakeTree(const TestInstallation& site, int clients) {
  AddBudget(site, "TOP", "", 100);
  for (int i = 0; i < clients; ++i) AddBudget(site, "LEAF" + std::to_string(i), "TOP", 1000);
}

// Runs one client on each leaf, all at the same time.
void RunClients(const TestInstallation& site, int clients,
                const std::function<void(const std::string&)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < clients; ++i) {
    threads.emplace_back([&, i] {
      const platform::Environment::ForThread environment(site.Host().Environment());
      work("LEAF" + std::to_string(i));
    });
  }
  for (auto& thread : threads) thread.join();
}

TEST(Overspending, WhoChecksBeforePostingOverspends) {
  const TestInstallation site;
  MakeTree(site, 2);
  std::barrier both_have_checked(2);
  std::atomic<int> committed = 0;
  RunClients(site, 2, [&](const std::string& leaf) {
    const bool refused = NeedsApproval(leaf, 60);
    both_have_checked.arrive_and_wait();
    if (refused) return;
    const Outcome outcome = site.Host().Transactions().RunWithRetry([&] { Post(leaf, 60); }, kAttempts);
    committed += outcome == Outcome::Committed ? 1 : 0;
  });
  EXPECT_EQ(committed, 2);
  EXPECT_EQ(UsedCents(site, "TOP"), 12000);
}

TEST(Overspending, WhoPostsBeforeCheckingDoesNot) {
  constexpr int kClients = 4;
  constexpr int kRounds = 10;
  const TestInstallation site;
  MakeTree(site, kClients);
  std::atomic<int> attempts = 0;
  for (int round = 0; round < kRounds; ++round) {
    site.Sql("UPDATE BUDGETLINES SET USEDAPPROVEDAMNT = 0");
    std::atomic<int> committed = 0;
    std::barrier all_are_ready(kClients);
    RunClients(site, kClients, [&](const std::string& leaf) {
      all_are_ready.arrive_and_wait();
      const auto post_and_check = [&] {
        ++attempts;
        Post(leaf, 40);
        // The amount is in the totals already, so nothing more is asked for.
        if (NeedsApproval(leaf, 0)) automation::TransactionContext::Current()->SetAbort();
      };
      const Outcome outcome = site.Host().Transactions().RunWithRetry(post_and_check, kAttempts);
      committed += outcome == Outcome::Committed ? 1 : 0;
    });
    EXPECT_EQ(committed, 2);
    EXPECT_EQ(UsedCents(site, "TOP"), 8000);
    std::int64_t leaves = 0;
    for (int i = 0; i < kClients; ++i) leaves += UsedCents(site, "LEAF" + std::to_string(i));
    EXPECT_EQ(leaves, 8000);
  }
  std::printf("%d postings with a check, %d attempts\n", kClients * kRounds, attempts.load());
}

}  // namespace

}  // namespace talvex::test
