#include "component/public_classes.h"

#include "accounting/accounting_parameter.h"
#include "accounting/budget_manager.h"
#include "automation/collection.h"
#include "automation/dictionary.h"
#include "automation/error.h"
#include "exchange/budget.h"
#include "exchange/budget_excel.h"
#include "ledger/budget_t.h"
#include "platform/database/connection.h"
#include "platform/database/recordset.h"
#include "platform/spreadsheet/workbook.h"
#include "platform/xml/xml_document.h"

namespace talvex::component {

namespace {

// Classes that are described as others are, but whose objects come from opening a workbook.
template <class C>
void RegisterOpened(automation::ClassRegistry& classes) {
  classes.Register(C::Info(), []() -> automation::ObjectRef {
    throw automation::Error(
        automation::error_number::kCannotCreateObject, "Talvex.Automation",
        "Can't create object: " + C::ClassName() + " (Platform.Spreadsheet opens workbooks)");
  });
}

}  // namespace

void RegisterPublicClasses(automation::ClassRegistry& classes) {
  classes.Register<BudgetT>();
  classes.Register<Budget>();
  classes.Register<BudgetExcel>();

  classes.Register<BudgetManager>();
  classes.Register<LedgerAccount>();
  classes.Register<AccountingRule>();
  classes.Register<AccountingRuleLine>();
  classes.Register<AccountingParameter>();

  classes.Register<automation::Dictionary>();
  classes.Register<automation::Collection>();
  classes.Register<platform::database::Connection>();
  classes.Register<platform::database::Recordset>();
  classes.Register<platform::xml::XmlDocument>();
  classes.Register<platform::spreadsheet::Application>();
  RegisterOpened<platform::spreadsheet::Workbook>(classes);
  RegisterOpened<platform::spreadsheet::Worksheet>(classes);
}

}  // namespace talvex::component
