#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "ledger/budget_t.h"
#include "support/error_of.h"
#include "support/recorded_installation.h"
#include "support/stood_in_test.h"

namespace talvex::test {

namespace {

using automation::Array;
using automation::Currency;
using automation::Date;
using automation::Dictionary;
using automation::Variant;

const Date kDay = Date::Civil(2026, 3, 15);

void AddBudget(const TestInstallation& site, const std::string& code, const std::string& holder) {
  site.Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, USERID) VALUES ('" + code +
           "', 1, 'EUR', '" + holder + "')");
  site.Sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT) VALUES ('" + code +
           "', '2026-01-01T00:00:00', 100)");
}

void PutUnder(const TestInstallation& site, const std::string& parent, const std::string& child) {
  site.Sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('" + parent + "', '" + child +
           "')");
}

TEST(Checks, GiveACodeOrACodeAndTwoCurrencies) {
  OnOwnThread([] {
    const TestInstallation site;
    AddBudget(site, "A", "anna");
    std::string currency = "EUR";
    std::shared_ptr<Dictionary> holders;
    BudgetT().CheckBudgetStructure("A", kDay, 150.5, currency, holders);
    ASSERT_EQ(holders->Count(), 1);
    EXPECT_EQ(holders->Item("anna"), Variant("A"));

    std::shared_ptr<Dictionary> simulated;
    BudgetT().SimCheckBudgetStructure("A", kDay, 150.5, currency, simulated);
    const Variant item = simulated->Item("anna");
    ASSERT_TRUE(item.IsArray());
    EXPECT_EQ(item.As<Array>().Lower(), 0);
    EXPECT_EQ(item, Variant(Array({"A", Currency::FromDouble(100), Currency::FromDouble(150.5)})));
  });
}

std::string BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Checks, LeaveTheDatabaseFileByteForByteAsItWas) {
  OnOwnThread([] {
    const TestInstallation site(true);
    // Everything that was written is in the one file, and none beside it grows.
    site.Sql("PRAGMA wal_checkpoint(TRUNCATE)");
    const std::string path = site.DatabasePath();
    const std::string before = BytesOf(path);
    const std::string log_before = BytesOf(path + "-wal");
    ASSERT_FALSE(before.empty());
    std::string currency = "EUR";
    std::size_t holders_found = 0;
    for (const std::string& code : site.Rows("SELECT BUDGETCODE FROM BUDGET")) {
      std::shared_ptr<Dictionary> holders;
      site.Host().Transactions().Run(
          [&] { BudgetT().CheckBudgetStructure(code, kDay, 1e6, currency, holders); });
      BudgetT().SimCheckBudgetStructure(code, kDay, 1e6, currency, holders);
      holders_found += static_cast<std::size_t>(holders->Count());
    }
    EXPECT_GT(holders_found, 10U);
    EXPECT_EQ(BytesOf(path), before);
    EXPECT_EQ(BytesOf(path + "-wal"), log_before);
  });
}

TEST(Checks, AFailingLevelLeavesTheHoldersFoundBefore) {
  OnOwnThread([] {
    RecordedInstallation test;
    AddBudget(test.Site(), "A", "anna");
    AddBudget(test.Site(), "P", "pia");
    PutUnder(test.Site(), "P", "A");
    test.Site().Sql("UPDATE BUDGET SET CURRENCYCODE = 'QQQ' WHERE BUDGETCODE = 'P'");
    std::string currency = "EUR";
    auto holders = std::make_shared<Dictionary>();
    EXPECT_EQ(ErrorOf([&] { BudgetT().CheckBudgetStructure("A", kDay, 200, currency, holders); }).number, 5);
    EXPECT_EQ(holders->Count(), 1);
    EXPECT_TRUE(holders->Exists("anna"));
  });
}

TEST(Checks, StackedDiamondsAreWalkedOnce) {
  OnOwnThread([] {
    RecordedInstallation test;
    constexpr int kFloors = 30;
    test.Site().Host().Transactions().Run([&] {
      for (int floor = 0; floor < kFloors; ++floor) {
        const std::string here = std::to_string(floor);
        const std::string next = std::to_string(floor + 1);
        for (const auto* side : {"L", "R"}) {
          PutUnder(test.Site(), side + here, "J" + here);
          PutUnder(test.Site(), "J" + next, side + here);
        }
      }
    });
    test.Script().ForgetTexts();
    std::string currency = "EUR";
    std::shared_ptr<Dictionary> holders;
    BudgetT().CheckBudgetStructure("J0", kDay, 1, currency, holders);
    EXPECT_EQ(test.Script().Count("SELECT PARENTBUDGET"), 3U * kFloors + 1);
  });
}

TEST(Checks, ClimbAChainOfAThousand) {
  OnOwnThread([] {
    const TestInstallation site;
    site.Host().Transactions().Run([&] {
      for (int i = 0; i < 1000; ++i) PutUnder(site, "B" + std::to_string(i + 1), "B" + std::to_string(i));
      AddBudget(site, "B1000", "anna");
      std::string currency = "EUR";
      std::shared_ptr<Dictionary> holders;
      BudgetT().CheckBudgetStructure("B0", kDay, 200, currency, holders);
      EXPECT_TRUE(holders->Exists("anna"));
    });
  });
}

}  // namespace

}  // namespace talvex::test
