// The statements that the operations of the ledger send, to the letter.
#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "support/recorded_installation.h"

namespace talvex::test {

namespace {

using automation::Array;
using automation::Collection;
using automation::Dictionary;

class LedgerStatements {
 public:
  LedgerStatements() {
    recorded_.Site().Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
    recorded_.Site().Sql(
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE) VALUES "
        "('O''N', 1, 'EUR', 'L', 'C')");
    recorded_.Site().Sql(
        "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT) VALUES ('O''N', '2026-01-01T00:00:00', "
        "1)");
    recorded_.Script().ForgetTexts();
  }

  [[nodiscard]] const TestInstallation& Site() const { return recorded_.Site(); }

  // The texts sent since the last call, without those that belong to connections and transactions.
  [[nodiscard]] std::vector<std::string> Sent() {
    std::vector<std::string> texts;
    for (const std::string& text : recorded_.Script().Texts()) {
      if (text.find(' ') != std::string::npos && !text.starts_with("set TRANSACTION")) texts.push_back(text);
    }
    recorded_.Script().ForgetTexts();
    return texts;
  }

 private:
  RecordedInstallation recorded_;
};

using Texts = std::vector<std::string>;

void WithStatements(const std::function<void(LedgerStatements&, BudgetT&)>& body) {
  OnOwnThread([&] {
    LedgerStatements statements;
    BudgetT ledger;
    body(statements, ledger);
  });
}

std::shared_ptr<Collection> Properties(const std::string& office, const std::string& charge_type) {
  auto properties = std::make_shared<Collection>();
  properties->Add(charge_type, "RequisitionChargeType");
  properties->Add(office, "RequisitionRequisitionerOffice");
  return properties;
}

const std::string kLineToday =
    "SELECT ID FROM BUDGETLINES WHERE BUDGETCODE='O''N' and STARTDATE<='2026-03-16T00:00:00' AND "
    "(ENDDATE>='2026-03-16T00:00:00' OR ENDDATE IS NULL)";

TEST(LedgerStatements, OfACheck) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    std::string currency = "EUR";
    std::shared_ptr<Dictionary> holders;
    ledger.CheckBudgetStructure("O'N", automation::Date::Civil(2026, 3, 15, 9, 30, 0), 1, currency, holders);
    const Texts expected = {
        "SELECT * FROM BUDGET WHERE BUDGETCODE='O''N'",
        "SELECT * FROM BUDGETLINES WHERE BUDGETCODE='O''N' AND STARTDATE<='2026-03-15T00:00:00' AND "
        "(ENDDATE>='2026-03-15T00:00:00' OR ENDDATE IS NULL)",
        "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET='O''N'",
    };
    EXPECT_EQ(test.Sent(), expected);
    ledger.SimCheckBudgetStructure("O'N", automation::Date::Civil(2026, 3, 15), 1, currency, holders);
    EXPECT_EQ(test.Sent(), expected);
    ledger.CheckBudgetStructure("  ", automation::Date::Civil(2026, 3, 15), 1, currency, holders);
    EXPECT_EQ(test.Sent(), Texts{"SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET='  '"});
  });
}

TEST(LedgerStatements, OfASelectionByFiltersReadTheBudgetsOnce) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    auto properties = Properties("l", "c");
    std::string code;
    ledger.GetBudget(properties, code, std::nullopt);
    EXPECT_EQ(code, "O'N");
    EXPECT_EQ(test.Sent(),
              (Texts{"SELECT BUDGETDIMTYPE1, BUDGETDIMTYPE2, BUDGETDIMTYPE3, OFFICEDESCRIPTION  FROM "
                     "BUDGETDIMENSIONTYPE  WHERE OFFICEDESCRIPTION='l' OR OFFICEDESCRIPTION IS NULL",
                     "SELECT * FROM BUDGET WHERE BUDGETTYPE=1", kLineToday}));
  });
}

TEST(LedgerStatements, OfSeveralMatchesAskForTheirCurrentLines) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    test.Site().Sql(
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, OFFICEDESCRIPTION, CHARGETYPECODE) VALUES ('P', 1, 'L', "
        "'C')");
    auto properties = Properties("L", "C");
    std::string code;
    static_cast<void>(test.Sent());
    ledger.GetBudget(properties, code, std::nullopt);
    const Texts sent = test.Sent();
    EXPECT_EQ(code, "O'N");
    ASSERT_EQ(sent.size(), 3U);
    EXPECT_EQ(
        sent[2],
        "SELECT * FROM BUDGETLINES WHERE ( BUDGETCODE = 'O''N' OR  BUDGETCODE = 'P') and "
        "STARTDATE<='2026-03-16T00:00:00' AND (ENDDATE>='2026-03-16T00:00:00' OR ENDDATE IS NULL) ORDER "
        "BY STARTDATE ");
  });
}

TEST(LedgerStatements, OfMoreThanFiveHundredMatchesAskInPortions) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    test.Site().Sql(
        "WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N WHERE I < 1000) "
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, OFFICEDESCRIPTION, CHARGETYPECODE) "
        "SELECT 'P' || (1000 + I), 1, 'L', 'C' FROM N");
    auto properties = Properties("L", "C");
    std::string code;
    static_cast<void>(test.Sent());
    ledger.GetBudget(properties, code, std::nullopt);
    EXPECT_EQ(code, "O'N");
    const auto portion = [](const std::string& first, int from, int to) {
      std::string criterion = first;
      for (int i = from; i <= to; ++i)
        criterion += (criterion.empty() ? "" : " OR ") + (" BUDGETCODE = 'P" + std::to_string(i) + "'");
      return "SELECT * FROM BUDGETLINES WHERE (" + criterion +
             ") and STARTDATE<='2026-03-16T00:00:00' AND (ENDDATE>='2026-03-16T00:00:00' OR ENDDATE IS NULL) "
             "ORDER BY STARTDATE ";
    };
    const Texts sent = test.Sent();
    ASSERT_EQ(sent.size(), 5U);
    EXPECT_EQ(sent[2], portion(" BUDGETCODE = 'O''N'", 1001, 1499));
    EXPECT_EQ(sent[3], portion("", 1500, 1999));
    EXPECT_EQ(sent[4], portion("", 2000, 2000));
  });
}

TEST(LedgerStatements, WithoutAnyStandardBudgetNoLineIsLookedFor) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    test.Site().Sql("UPDATE BUDGET SET BUDGETTYPE = 2");
    auto properties = Properties("L", "C");
    std::string code = "before";
    static_cast<void>(test.Sent());
    ledger.GetBudget(properties, code, std::nullopt);
    EXPECT_EQ(code, "");
    EXPECT_EQ(test.Sent().size(), 2U);
  });
}

TEST(LedgerStatements, OfASelectionByQueriesAtEveryLevel) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    const std::string types =
        "SELECT BUDGETDIMTYPE1, BUDGETDIMTYPE2,BUDGETDIMTYPE3 FROM BUDGETDIMENSIONTYPE WHERE "
        "OFFICEDESCRIPTION ";
    const std::string none = " AND BUDGETDIMENSION1 = '' AND BUDGETDIMENSION2 ='' AND BUDGETDIMENSION3 = ''";
    std::string office = "L";
    std::string charge_type = "C";
    const auto relevant = ledger.GetRelevantBudget(std::make_shared<Collection>(), office, charge_type);
    EXPECT_EQ(relevant->Count(), 1);
    EXPECT_EQ(
        test.Sent(),
        (Texts{types + "='L'", types + "IS NULL",
               "Select BudgetCode from Budget where OfficeDescription = 'L' AND chargetypeCode = 'C' AND "
               "BudgetType = 1" +
                   none,
               kLineToday,
               "Select BudgetCode from Budget where OfficeDescription = 'L' AND ChargeTypeCode is NULL AND "
               "BudgetType = 1" +
                   none,
               "Select BudgetCode from Budget where OfficeDescription is NULL AND ChargeTypeCode = 'C' AND "
               "BudgetType = 1" +
                   none,
               "Select BudgetCode from Budget where OfficeDescription is NULL AND ChargeTypeCode is NULL AND "
               "BudgetType = 1" +
                   none}));
  });
}

TEST(LedgerStatements, OfASelectionByQueriesInEveryCombination) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    test.Site().Sql(
        "INSERT INTO BUDGETDIMENSIONTYPE (BUDGETDIMTYPE1, BUDGETDIMTYPE2, BUDGETDIMTYPE3) VALUES ('X', 'Y', "
        "'Z')");
    auto properties = std::make_shared<Collection>();
    for (const auto* name : {"X", "Y", "Z"}) properties->Add(std::string(name) + "'%", name);
    std::string office = "L";
    std::string charge_type = "C";
    static_cast<void>(test.Sent());
    static_cast<void>(ledger.GetRelevantBudget(properties, office, charge_type));
    const Texts sent = test.Sent();
    const std::string query =
        "Select BudgetCode from Budget where OfficeDescription = 'L' AND chargetypeCode = 'C' AND BudgetType "
        "= 1";
    const Texts clauses = {
        " AND BUDGETDIMENSION1 = 'X''%' AND BUDGETDIMENSION2 = 'Y''%' AND BUDGETDIMENSION3 = 'Z''%'",
        " AND BUDGETDIMENSION1 = 'X''%' AND BUDGETDIMENSION2 = 'Y''%' AND BUDGETDIMENSION3 = ''",
        " AND BUDGETDIMENSION1 = 'X''%' AND BUDGETDIMENSION2 = '' AND BUDGETDIMENSION3 = 'Z''%'",
        " AND BUDGETDIMENSION1 = 'X''%' AND BUDGETDIMENSION2 = '' AND BUDGETDIMENSION3 = ''",
        " AND BUDGETDIMENSION1 = '' AND BUDGETDIMENSION2 = 'Y''%' AND BUDGETDIMENSION3 = 'Z''%'",
        " AND BUDGETDIMENSION1 = '' AND BUDGETDIMENSION2 = 'Y''%' AND BUDGETDIMENSION3 = ''",
        " AND BUDGETDIMENSION1 = '' AND BUDGETDIMENSION2 = '' AND BUDGETDIMENSION3 = 'Z''%'",
        " AND BUDGETDIMENSION1 = '' AND BUDGETDIMENSION2 ='' AND BUDGETDIMENSION3 = ''",
    };
    ASSERT_GE(sent.size(), 2 + clauses.size());
    for (std::size_t i = 0; i < clauses.size(); ++i) EXPECT_EQ(sent[2 + i], query + clauses[i]);
  });
}

TEST(LedgerStatements, OfMaintenance) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    Array fields({"CURRENCYCODE", "USERID"});
    Array values({"EUR", ""});
    ledger.Insert("N", fields, values);
    EXPECT_EQ(test.Sent(), (Texts{"select * from BUDGET where 0=1",
                                  "SELECT CURRENCYCODE FROM CURRENCY WHERE CURRENCYCODE='EUR'",
                                  "INSERT INTO BUDGET (BUDGETCODE, CURRENCYCODE, USERID) VALUES (?, ?, ?)"}));
    ledger.Update("N", fields, values);
    EXPECT_EQ(test.Sent().front(), "select * from BUDGET where BUDGETCODE='N'");
    ledger.InsertLine("O'N", 5, Array({"BUDGETAMNT"}), Array({0.0}));
    EXPECT_EQ(test.Sent(),
              (Texts{"select * from BUDGETLINES where 0=1", "select * from BUDGET where BUDGETCODE='O''N'",
                     "INSERT INTO BUDGETLINES (BUDGETCODE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) VALUES "
                     "(?, ?, ?, ?)"}));
    ledger.UpdateLine("O'N", 2, Array({"BUDGETAMNT"}), Array({0.0}));
    EXPECT_EQ(test.Sent().front(), "select * from BUDGETLINES where BUDGETCODE='O''N' AND ID=2");
    ledger.InsertDimension("L", Array(), Array());
    EXPECT_EQ(test.Sent().front(), "select * from BUDGETDIMENSIONTYPE where 0=1");
    ledger.Delete("O'N");
    EXPECT_EQ(test.Sent(),
              (Texts{"SELECT ID, BUDGETCODE FROM BUDGETLINES WHERE BUDGETCODE='O''N'",
                     "DELETE FROM BUDGETLINES WHERE BUDGETCODE='O''N' AND ID=1",
                     "DELETE FROM BUDGETLINES WHERE BUDGETCODE='O''N' AND ID=2",
                     "DELETE FROM BUDGETRELATIONS WHERE PARENTBUDGET='O''N' OR CHILDBUDGET='O''N'",
                     "DELETE FROM BUDGET WHERE BUDGETCODE='O''N'"}));
  });
}

TEST(LedgerStatements, OfTheQuestionsOfOtherComponents) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    const std::pair<const char*, const char*> rows[] = {
        {"BudgetCode", "SELECT * FROM BUDGET WHERE BUDGETCODE='a''b'"},
        {"USERID", "SELECT * FROM BUDGET WHERE USERID = 'a''b'"},
        {"CURRENCYCODE", "SELECT * FROM BUDGET WHERE CURRENCYCODE = 'a''b'"},
        {"OFFICEDESCRIPTION", "SELECT * FROM BUDGETDIMENSIONTYPE WHERE OFFICEDESCRIPTION = 'a''b'"},
        {"CHARGETYPECODE", "SELECT * FROM CHARGETYPES WHERE CHARGETYPECODE = 'a''b'"},
    };
    for (const auto& [name, query] : rows) {
      EXPECT_FALSE(ledger.IReferentialIntegrity_Exists(Array({"OTHER", name}), Array({"x", "a'b"})));
      EXPECT_EQ(test.Sent(), Texts{query});
    }
    EXPECT_FALSE(ledger.IReferentialIntegrity_Exists(Array({"OTHER"}), Array({"x"})));
    EXPECT_EQ(test.Sent(), Texts{});
  });
}

TEST(LedgerStatements, OfCharges) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    const std::string all = "SELECT * FROM CHARGELINES ORDER BY CHARGELINEID DESC";
    const std::string insert =
        "INSERT INTO CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER, ADMINOFFICE, BUDGETCODE) VALUES "
        "(?, ?, ?, ?)";
    Array fields({"REQUISITIONLINEID", "REQUISITIONLINENUMBER", "ADMINOFFICE", "BUDGETCODE"});
    Array values({10, 1, "L", "A"});
    EXPECT_EQ(ledger.createchargeline(fields, values), 1);
    EXPECT_EQ(test.Sent(), (Texts{all, insert}));
    EXPECT_EQ(ledger.createchargeline(fields, values), 2);
    EXPECT_EQ(test.Sent(),
              (Texts{all, "SELECT * FROM CHARGELINES WHERE REQUISITIONLINEID=10 AND REQUISITIONLINENUMBER=1",
                     "DELETE FROM CHARGELINES WHERE REQUISITIONLINEID=10 AND REQUISITIONLINENUMBER= 1"}));
    Array offices({"", "L"});
    Array budgets({"", "A"});
    Array percentages({0, 100.0});
    const std::string of_line =
        "SELECT * FROM CHARGELINES WHERE REQUISITIONLINEID=-5 AND REQUISITIONLINENUMBER= 2";
    ledger.UpdateChargeline(-5, 2, 0, offices, budgets, percentages);
    EXPECT_EQ(test.Sent(), (Texts{of_line,
                                  "INSERT INTO CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER, "
                                  "REVISION, ADMINOFFICE, BUDGETCODE, PERCENTAGESPLIT) VALUES (?, ?, ?, ?, "
                                  "?, ?)"}));
    ledger.UpdateChargeline(-5, 2, 0, offices, budgets, percentages);
    EXPECT_EQ(test.Sent().at(1),
              "DELETE FROM CHARGELINES WHERE REQUISITIONLINEID=-5 AND REQUISITIONLINENUMBER= 2");
    EXPECT_EQ(ledger.getLedgerAccount("a'b"), "");
    EXPECT_EQ(test.Sent(), Texts{"SELECT LEDGERACCOUNTCODE FROM CHARGETYPES WHERE CHARGETYPECODE='a''b'"});
    test.Site().Sql("INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('T')");
    static_cast<void>(test.Sent());
    EXPECT_TRUE(ledger.DeleteChargeType("T"));
    EXPECT_EQ(test.Sent().back(), "DELETE FROM CHARGETYPES WHERE CHARGETYPECODE='T'");
    EXPECT_EQ(ledger.GetAllChargeTypes()->Count(), 0);
    EXPECT_EQ(test.Sent(), Texts{"SELECT CHARGETYPECODE FROM CHARGETYPES"});
  });
}

TEST(LedgerStatements, OfListings) {
  WithStatements([](LedgerStatements& test, BudgetT& ledger) {
    std::string user = " a'b";
    EXPECT_EQ(ledger.GetAllBudgets(user)->Count(), 0);
    EXPECT_EQ(test.Sent(),
              Texts{"SELECT BUDGETCODE FROM BUDGET WHERE USERID=' a''b' ORDER BY BUDGETCODE ASC "});
    user = "  ";
    EXPECT_EQ(ledger.GetAllBudgets(user)->Count(), 1);
    EXPECT_EQ(test.Sent(), Texts{"SELECT BUDGETCODE FROM BUDGET ORDER BY BUDGETCODE ASC"});
    EXPECT_EQ(ledger.GetAllStandardBudgets()->Count(), 1);
    EXPECT_EQ(test.Sent(), Texts{"SELECT BUDGETCODE FROM BUDGET WHERE BUDGETTYPE=1"});
    EXPECT_EQ(ledger.CheckClosedLoop("A", "Z'")->Count(), 0);
    EXPECT_EQ(test.Sent(),
              (Texts{"SELECT * FROM BUDGET WHERE BUDGETTYPE=1 AND BUDGETCODE>='A' AND BUDGETCODE<='Z'''",
                     "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET='O''N'"}));
  });
}

}  // namespace

}  // namespace talvex::test
