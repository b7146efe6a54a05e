// Many writers on one tree of budgets.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <random>
#include <thread>

#include "ledger/budget_t.h"
#include "platform/environment.h"
#include "stores/budget_tree.h"

namespace talvex::test {

namespace {

constexpr int kWriters = 8;
constexpr int kPostings = 500;

struct Tally {
  std::atomic<int> attempts{0};
  std::atomic<int> acknowledged{0};
  std::array<std::atomic<std::int64_t>, kWriters> cents{};  // By leaf.
};

std::string Leaf(int number) { return "LEAF" + std::to_string(number); }

// TOP above two groups, four leaves below each.
void MakeTree(const TestInstallation& site) {
  AddBudget(site, "TOP", "", 1000000);
  AddBudget(site, "GROUP0", "TOP", 1000000);
  AddBudget(site, "GROUP1", "TOP", 1000000);
  for (int i = 0; i < kWriters; ++i) AddBudget(site, Leaf(i), "GROUP" + std::to_string(i / 4), 1000000);
}

// Posts to any of the leaves, so that writers meet on every level.
void Write(const TestInstallation& site, unsigned seed, Tally& tally) {
  const platform::Environment::ForThread environment(site.Host().Environment());
  std::mt19937 random(seed);
  const automation::Date date = automation::Date::Civil(2026, 3, 15);
  for (int i = 0; i < kPostings; ++i) {
    const int leaf = static_cast<int>(random() % kWriters);
    const int cents = static_cast<int>(random() % 20000) - 5000;
    const auto outcome = site.Host().Transactions().RunWithRetry(
        [&] {
          ++tally.attempts;
          std::make_shared<BudgetT>()->PostToBudget(Leaf(leaf), date, cents / 100.0, "EUR",
                                                    TalvexType::Approved);
        },
        kAttempts);
    if (outcome != host::Outcome::Committed) continue;
    ++tally.acknowledged;
    tally.cents[static_cast<std::size_t>(leaf)] += cents;
  }
}

TEST(Concurrency, PostingsOfEightWritersAddUpToTheLastCent) {
  const TestInstallation site;
  MakeTree(site);
  Tally tally;
  std::vector<std::thread> writers;
  for (unsigned i = 0; i < kWriters; ++i) writers.emplace_back([&, i] { Write(site, i + 1, tally); });
  for (auto& writer : writers) writer.join();

  std::array<std::int64_t, 2> groups{};
  for (int i = 0; i < kWriters; ++i) {
    const std::int64_t cents = tally.cents[static_cast<std::size_t>(i)];
    groups[static_cast<std::size_t>(i / 4)] += cents;
    EXPECT_EQ(UsedCents(site, Leaf(i)), cents) << Leaf(i);
  }
  EXPECT_EQ(UsedCents(site, "GROUP0"), groups[0]);
  EXPECT_EQ(UsedCents(site, "GROUP1"), groups[1]);
  EXPECT_EQ(UsedCents(site, "TOP"), groups[0] + groups[1]);
  EXPECT_EQ(tally.acknowledged, kWriters * kPostings);
  std::printf("%d postings, %d attempts, so %d met a conflict and were run again\n",
              tally.acknowledged.load(), tally.attempts.load(), tally.attempts.load() - kWriters * kPostings);
}

}  // namespace

}  // namespace talvex::test
