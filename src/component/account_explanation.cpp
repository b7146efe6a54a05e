#include "component/account_explanation.h"

#include "accounting/budget_manager.h"

namespace talvex::component {

AccountDecision ExplainDefaultAccount(const std::shared_ptr<automation::Collection>& properties,
                                      std::int32_t account_type) {
  AccountDecision decision;
  static_cast<void>(BudgetManager::DecideLedgerAccount(
      properties, static_cast<LedgerAccountType>(account_type), &decision));
  return decision;
}

}  // namespace talvex::component
