// Under which name each operation of the ledger reports a failure. Some names are irregular; monitors know
// them so.
#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "platform/database/fault.h"
#include "support/error_of.h"
#include "support/recorded_installation.h"

namespace talvex::test {

namespace {

using automation::Array;
using automation::Collection;
using automation::Date;
using automation::Dictionary;
using platform::database::Fault;
using platform::database::FaultKind;

struct NamedOperation {
  const char* statement;  // A part of the first statement that it sends.
  const char* name;       // Empty for an operation whose failures pass through it.
  void (*run)(BudgetT& ledger);
};

void Check(BudgetT& ledger, void (BudgetT::*check)(const std::string&, Date, double, std::string&,
                                                   std::shared_ptr<Dictionary>&)) {
  std::string currency = "EUR";
  std::shared_ptr<Dictionary> holders;
  (ledger.*check)("A", Date::Civil(2026, 3, 15), 1, currency, holders);
}

std::shared_ptr<Collection> Properties() {
  auto properties = std::make_shared<Collection>();
  properties->Add("IT", "RequisitionChargeType");
  properties->Add("Lyon", "RequisitionRequisitionerOffice");
  return properties;
}

const NamedOperation kOperations[] = {
    {"BUDGET", "Talvex.BudgetT.CheckBudgetStructure",
     [](BudgetT& ledger) { Check(ledger, &BudgetT::CheckBudgetStructure); }},
    {"BUDGET", "Talvex.BudgetT.SimCheckBudgetStructure",
     [](BudgetT& ledger) { Check(ledger, &BudgetT::SimCheckBudgetStructure); }},
    {"BUDGETDIMENSIONTYPE", "Talvex.BudgetT.GetBudget",
     [](BudgetT& ledger) {
       auto properties = Properties();
       std::string code;
       ledger.GetBudget(properties, code, std::nullopt);
     }},
    {"BUDGETDIMENSIONTYPE", "Talvex.BudgetT.getAllStandardBudgets",
     [](BudgetT& ledger) {
       std::string office;
       std::string charge_type;
       static_cast<void>(ledger.GetRelevantBudget(Properties(), office, charge_type));
     }},
    {"BUDGET", "Talvex.BudgetT.InsertUpdate",
     [](BudgetT& ledger) {
       Array fields;
       Array values;
       ledger.Insert("A", fields, values);
     }},
    {"BUDGET", "Talvex.BudgetT.InsertUpdate",
     [](BudgetT& ledger) {
       Array fields;
       Array values;
       ledger.Update("A", fields, values);
     }},
    {"BUDGETLINES", "Talvex.BudgetT.InsertUpdateLine",
     [](BudgetT& ledger) { ledger.InsertLine("A", 0, Array(), Array()); }},
    {"BUDGETLINES", "Talvex.BudgetT.InsertUpdateLine",
     [](BudgetT& ledger) { ledger.UpdateLine("A", 1, Array(), Array()); }},
    {"BUDGETLINES", "Talvex.BudgetT.Delete", [](BudgetT& ledger) { ledger.Delete("A"); }},
    {"BUDGETLINES", "Talvex.BudgetT.DeleteLine", [](BudgetT& ledger) { ledger.DeleteLine("A", 1); }},
    {"BUDGETDIMENSIONTYPE", "Talvex.BudgetT.InsertDimension",
     [](BudgetT& ledger) { ledger.InsertDimension("Lyon", Array(), Array()); }},
    {"BUDGET", "Talvex.BudgetT.Exists",
     [](BudgetT& ledger) {
       static_cast<void>(ledger.IReferentialIntegrity_Exists(Array({"USERID"}), Array({"anna"})));
     }},
    {"CHARGELINES", "Talvex.BudgetT.Createchargeline",
     [](BudgetT& ledger) {
       Array fields;
       Array values;
       static_cast<void>(ledger.createchargeline(fields, values));
     }},
    {"CHARGELINES", "Talvex.BudgetT.UpdateChargeLine",
     [](BudgetT& ledger) {
       Array none;
       ledger.UpdateChargeline(1, 1, 1, none, none, none);
     }},
    {"CHARGELINES", "Talvex.BudgetT.DeleteChargeline",
     [](BudgetT& ledger) { ledger.DeleteChargeline(1, 1); }},
    {"BUDGET", "Talvex.BudgetT.DeleteChargeType",
     [](BudgetT& ledger) { static_cast<void>(ledger.DeleteChargeType("IT")); }},
    {"CHARGETYPES", "Talvex.BudgetT.getLedgerAccount",
     [](BudgetT& ledger) { static_cast<void>(ledger.getLedgerAccount("IT")); }},
    {"CHARGETYPES", "", [](BudgetT& ledger) { static_cast<void>(ledger.GetAllChargeTypes()); }},
    {"BUDGET", "",
     [](BudgetT& ledger) {
       std::string user;
       static_cast<void>(ledger.GetAllBudgets(user));
     }},
    {"BUDGET", "Talvex.BudgetT.getAllStandardBudgets",
     [](BudgetT& ledger) { static_cast<void>(ledger.GetAllStandardBudgets()); }},
    {"BUDGET", "Talvex.BudgetT.CheckClosedLoop",
     [](BudgetT& ledger) { static_cast<void>(ledger.CheckClosedLoop("A", "B")); }},
};

TEST(ErrorNames, OfTheLedgersOperations) {
  OnOwnThread([] {
    RecordedInstallation test;
    for (const NamedOperation& operation : kOperations) {
      test.Script().FailAt(operation.statement, 1, Fault(FaultKind::Other, 9999, "HY000", "pulled the plug"));
      const auto error = ErrorOf([&] {
        BudgetT ledger;
        operation.run(ledger);
      });
      test.Script().Heal();
      EXPECT_NE(error.description.find("pulled the plug"), std::string::npos) << operation.name;
      const std::string outermost = error.description.substr(0, error.description.find("\r\n DESC"));
      const std::string ledgers = "METHOD: Talvex.BudgetT.";
      if (*operation.name == '\0') {
        EXPECT_EQ(outermost.find(ledgers), std::string::npos) << outermost;
      } else {
        EXPECT_TRUE(outermost.ends_with(std::string("METHOD: ") + operation.name)) << outermost;
        // The name is there once: nothing frames a failure twice.
        EXPECT_EQ(error.description.find(ledgers), error.description.rfind(ledgers)) << error.description;
      }
    }
  });
}

}  // namespace

}  // namespace talvex::test
