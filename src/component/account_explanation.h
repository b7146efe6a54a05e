// Telling how a default ledger account is found.
#pragma once

#include <cstdint>
#include <memory>

#include "accounting/account_decision.h"
#include "automation/collection.h"

namespace talvex::component {

// Finds the account as Talvex.BudgetManager.getDefaultLedgerAccount does, by the same evaluation, and tells
// how. Only reads; raises what that method raises.
[[nodiscard]] AccountDecision ExplainDefaultAccount(const std::shared_ptr<automation::Collection>& properties,
                                                    std::int32_t account_type);

}  // namespace talvex::component
