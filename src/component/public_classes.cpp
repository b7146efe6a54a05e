#include "component/public_classes.h"

#include "accounting/accounting_parameter.h"
#include "accounting/budget_manager.h"
#include "automation/collection.h"
#include "automation/dictionary.h"
#include "exchange/budget.h"
#include "exchange/budget_excel.h"
#include "ledger/budget_t.h"
#include "platform/database/connection.h"
#include "platform/database/recordset.h"
#include "platform/xml/xml_document.h"

namespace talvex::component {

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
}

}  // namespace talvex::component
