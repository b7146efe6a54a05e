// Reading transactions beside a writer, on whatever store the tests run on.

#include <gtest/gtest.h>

#include <thread>

#include "automation/error.h"
#include "ledger/budget_t.h"
#include "platform/environment.h"
#include "stores/budget_tree.h"
#include "support/error_of.h"

namespace talvex::test {

namespace {

using Rows = std::vector<std::string>;

// Posts on a thread of its own, as somebody else would. A posting that waited for a transaction of the thread
// that is waiting here would never end, or fail as busy.
void PostBeside(const TestInstallation& site, const std::string& code, double amount) {
  host::Outcome outcome = host::Outcome::Aborted;
  std::thread([&] {
    const platform::Environment::ForThread environment(site.Host().Environment());
    outcome = site.Host().Transactions().Run([&] {
      std::make_shared<BudgetT>()->PostToBudget(code, automation::Date::Civil(2026, 3, 15), amount, "EUR",
                                                TalvexType::Approved);
    });
  }).join();
  EXPECT_EQ(outcome, host::Outcome::Committed);
}

TEST(ReadingTransaction, SeesOneStateWhileOthersWriteWithoutWaitingForIt) {
  const TestInstallation site;
  AddBudget(site, "TOP", "", 1000);
  AddBudget(site, "LEAF", "TOP", 1000);
  site.Host().Transactions().RunReading([&] {
    EXPECT_EQ(UsedCents(site, "LEAF"), 0);
    PostBeside(site, "LEAF", 10);
    // Neither what was read before nor what was not has changed.
    EXPECT_EQ(UsedCents(site, "LEAF"), 0);
    EXPECT_EQ(UsedCents(site, "TOP"), 0);
    // What every connection of the component is told does not end the snapshot.
    site.Sql("set TRANSACTION ISOLATION LEVEL READ COMMITTED");
    EXPECT_EQ(UsedCents(site, "TOP"), 0);
    automation::Date day = automation::Date::Civil(2026, 3, 15);
    EXPECT_NE(std::make_shared<BudgetT>()->GetBudgetLine("LEAF", day),
              automation::Variant(automation::kNull));
    EXPECT_EQ(UsedCents(site, "TOP"), 0);
  });
  EXPECT_EQ(UsedCents(site, "LEAF"), 1000);
  EXPECT_EQ(UsedCents(site, "TOP"), 1000);
}

TEST(ReadingTransaction, RefusesToWriteAndSaysWhatToDo) {
  const TestInstallation site;
  AddBudget(site, "LEAF", "", 1000);
  for (const char* const statement :
       {"UPDATE BUDGETLINES SET BUDGETAMNT=1", "INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES ('Lyon')",
        "DELETE BUDGETLINES WHERE BUDGETCODE='LEAF'", "CREATE TABLE T (A INTEGER)"}) {
    site.Host().Transactions().RunReading([&] {
      const auto raised = ErrorOf([&] { site.Sql(statement); });
      EXPECT_EQ(raised.number, automation::error_number::kStatementRefused) << statement;
      EXPECT_NE(raised.description.find("TransactionHost::Run"), std::string::npos) << raised.description;
      // The refusal leaves the transaction as it was.
      EXPECT_EQ(UsedCents(site, "LEAF"), 0);
    });
  }
  const auto raised = ErrorOf([&] {
    site.Host().Transactions().RunReading([&] {
      std::make_shared<BudgetT>()->PostToBudget("LEAF", automation::Date::Civil(2026, 3, 15), 10, "EUR",
                                                TalvexType::Approved);
    });
  });
  EXPECT_EQ(raised.number, automation::error_number::kStatementRefused);
  EXPECT_EQ(UsedCents(site, "LEAF"), 0);
  EXPECT_EQ(site.Rows("SELECT BUDGETAMNT FROM BUDGETLINES"), Rows{"1000"});
}

// A transaction that a text had ended would keep what comes next on its own, though its host undoes it.
TEST(WritingTransaction, IsEndedByNobodyButItsHost) {
  const TestInstallation site;
  AddBudget(site, "LEAF", "", 1000);
  for (const char* const statement : {"COMMIT", "ROLLBACK", "BEGIN TRANSACTION", "SAVE TRANSACTION A"}) {
    const auto context = site.Host().Transactions().Begin();
    site.Sql("UPDATE BUDGETLINES SET USEDAPPROVEDAMNT=5");
    const auto raised = ErrorOf([&] { site.Sql(statement); });
    EXPECT_EQ(raised.number, automation::error_number::kStatementRefused) << statement;
    EXPECT_NE(raised.description.find("the host does so"), std::string::npos) << raised.description;
    site.Sql("UPDATE BUDGETLINES SET USEDAPPROVEDAMNT=7");
    EXPECT_EQ(UsedCents(site, "LEAF"), 700) << "the refusal leaves the transaction as it was";
    context->Rollback();
    EXPECT_EQ(UsedCents(site, "LEAF"), 0) << statement;
  }
}

TEST(ReadingTransaction, LeavesItsSessionFitForWriting) {
  const TestInstallation site;
  AddBudget(site, "LEAF", "", 1000);
  site.Host().Transactions().RunReading([&] { EXPECT_EQ(UsedCents(site, "LEAF"), 0); });
  EXPECT_EQ(ErrorOf([&] {
              site.Host().Transactions().RunReading([&] {
                EXPECT_EQ(UsedCents(site, "LEAF"), 0);
                throw automation::Error(77, "Source", "enough");
              });
            }).number,
            77);
  site.Host().Transactions().Run([&] {
    std::make_shared<BudgetT>()->PostToBudget("LEAF", automation::Date::Civil(2026, 3, 15), 10, "EUR",
                                              TalvexType::Approved);
  });
  EXPECT_EQ(UsedCents(site, "LEAF"), 1000);
  site.Sql("UPDATE BUDGETLINES SET USEDAPPROVEDAMNT=0");
  EXPECT_EQ(UsedCents(site, "LEAF"), 0);
}

}  // namespace

}  // namespace talvex::test
