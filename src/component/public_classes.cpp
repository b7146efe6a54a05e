#include "component/public_classes.h"

#include "automation/collection.h"
#include "automation/dictionary.h"
#include "ledger/budget_t.h"
#include "platform/database/connection.h"
#include "platform/database/recordset.h"

namespace talvex::component {

void RegisterPublicClasses(automation::ClassRegistry& classes) {
  classes.Register<BudgetT>();

  classes.Register<automation::Dictionary>();
  classes.Register<automation::Collection>();
  classes.Register<platform::database::Connection>();
  classes.Register<platform::database::Recordset>();
}

}  // namespace talvex::component
