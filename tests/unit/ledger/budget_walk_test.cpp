#include "ledger/budget_walk.h"

#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "support/error_of.h"
#include "support/recorded_installation.h"

namespace talvex::test {

namespace {

std::string CodeOf(int level) { return "B" + std::to_string(level); }

TEST(BudgetWalk, TakesAPathOfTenThousandBudgetsAndNoLongerOne) {
  OnOwnThread([] {
    const TestInstallation site;
    constexpr int kLongest = 10000;
    BudgetWalk walk;
    for (int i = 0; i < kLongest; ++i) ASSERT_TRUE(walk.Enter(CodeOf(i)));
    const auto raised = ErrorOf([&] { static_cast<void>(walk.Enter("TOO-DEEP")); });
    EXPECT_EQ(raised.number, 28);
    EXPECT_EQ(raised.description,
              "Out of stack space: the hierarchy above budget 'TOO-DEEP' is too deep: it is reached through "
              "10000 others");
    // What was walked does not count: the path may go up again beside it.
    walk.Leave(CodeOf(kLongest - 1));
    EXPECT_TRUE(walk.Enter("BESIDE"));
  });
}

// B0 under B1 under B2 ..., a line for the first one.
void MakeChain(const TestInstallation& site, int levels) {
  site.Sql(
      "WITH RECURSIVE N(I) AS (SELECT 0 UNION ALL SELECT I + 1 FROM N WHERE I + 1 < " +
      std::to_string(levels) +
      ") INSERT INTO BUDGETRELATIONS (CHILDBUDGET, PARENTBUDGET) SELECT 'B' || I, 'B' || (I + 1) FROM N");
  site.Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
  site.Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('B0', 1, 'EUR')");
  site.Sql(
      "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT) VALUES ('B0', "
      "'2026-01-01T00:00:00', '2026-12-31T00:00:00', 1000)");
}

automation::ErrorState FailingPosting(const TestInstallation& site) {
  return ErrorOf([&] {
    site.Host().Transactions().Run([] {
      BudgetT().PostToBudget("B0", automation::Date::Civil(2026, 3, 15), 1, "EUR", TalvexType::Approved);
    });
  });
}

std::size_t BytesLogged(const TestInstallation& site) {
  std::size_t bytes = 0;
  for (const std::string& line : site.LogLines()) bytes += line.size();
  return bytes;
}

TEST(BudgetWalk, APostingThatFailsAThousandLevelsUpLogsABoundedAmount) {
  OnOwnThread([] {
    RecordedInstallation test;
    MakeChain(test.Site(), 1000);
    test.Script().FailAt(
        "CHILDBUDGET='B999'", 1,
        platform::database::Fault(platform::database::FaultKind::Other, 9999, "HY000", "pulled the plug"));
    const auto raised = FailingPosting(test.Site());
    EXPECT_NE(raised.description.find("pulled the plug"), std::string::npos);
    EXPECT_NE(raised.description.find("METHOD: Talvex.BudgetT.PostToBudget\r\n"), std::string::npos);
    EXPECT_LE(raised.description.size(), 64U * 1024);
    const std::size_t entries = test.Site().LogLines().size();
    EXPECT_GE(entries, 2000U);
    EXPECT_LE(BytesLogged(test.Site()), entries * 4000);
  });
}

TEST(BudgetWalk, AHierarchyOfSixteenThousandLevelsIsAnErrorWithABoundedTrace) {
  OnOwnThread([] {
    const TestInstallation site;
    MakeChain(site, 16000);
    const auto raised = FailingPosting(site);
    EXPECT_EQ(raised.number, 28);
    EXPECT_NE(raised.description.find("Out of stack space: the hierarchy above budget 'B"),
              std::string::npos);
    EXPECT_LE(raised.description.size(), 64U * 1024);
    EXPECT_LE(BytesLogged(site), site.LogLines().size() * 4000);
    EXPECT_EQ(site.Rows("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES"), std::vector<std::string>{"null"});
  });
}

}  // namespace

}  // namespace talvex::test
