#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "support/error_of.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

const automation::Date kDay = automation::Date::Civil(2026, 3, 15);

void AddBudget(const TestInstallation& site, const std::string& code, const std::string& holder) {
  site.Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, USERID, BUDGETWARNING) VALUES ('" +
           code + "', 1, 'EUR', " + holder + ", 10)");
  site.Sql(
      "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) "
      "VALUES ('" +
      code + "', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 1000, 1000, 1)");
}

// NOBODY without a holder, ANNA held by a user who reads Dutch, and GHOST by one who does not exist.
void Fill(const TestInstallation& site) {
  for (const auto* statement :
       {"INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)",
        "INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'Anna', 'a@example.com', "
        "1043)",
        "INSERT INTO REQUISITIONPARAMETER (PARAMNAME, PARAMVALUE) VALUES "
        "('SendEmailToBudgetHolderForBudgetWarning', 'True')"})
    site.Sql(statement);
  AddBudget(site, "NOBODY", "null");
  AddBudget(site, "ANNA", "'anna'");
  AddBudget(site, "GHOST", "'ghost'");
}

void Post(const std::string& code) { BudgetT().PostToBudget(code, kDay, 200, "EUR", TalvexType::Approved); }

TEST(Warnings, OfABudgetWithoutAHolderAreLoggedInEnglishWhoeverWasLookedUpBefore) {
  for (const bool in_host : {false, true}) {
    OnOwnThread([&] {
      const TestInstallation site;
      Fill(site);
      const auto transaction = in_host ? site.Host().Transactions().Begin() : nullptr;
      for (const auto* code : {"NOBODY", "ANNA", "NOBODY", "ANNA"}) Post(code);
      EXPECT_EQ(site.Rows("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES ORDER BY ID"),
                (std::vector<std::string>{"400", "400", "null"}));
      const auto log = site.LogLines();
      ASSERT_EQ(log.size(), 2U);
      for (const std::string& entry : log) {
        EXPECT_NE(entry.find("The mail 'Budget summary, Budget: NOBODY-1' was not sent: it has no addressee"),
                  std::string::npos)
            << entry;
      }
    });
  }
}

TEST(Warnings, ATextOfAnUnknownHolderFailsUnderOneName) {
  OnOwnThread([] {
    const TestInstallation site;
    Fill(site);
    Post("NOBODY");
    const auto raised = ErrorOf([] { Post("GHOST"); });
    EXPECT_EQ(raised.number, 5);
    EXPECT_NE(
        raised.description.find("\r\nERROR 0x5\r\n METHOD: Talvex.getI18N\r\n DESC: \r\nERROR 0x5\r\n "
                                "METHOD: Lib_UserLib.UL_CreateUO\r\n DESC: The user 'ghost' is unknown"),
        std::string::npos)
        << raised.description;
  });
}

}  // namespace

}  // namespace talvex::test
