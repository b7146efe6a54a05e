// The header row of a budget that has lines.
#pragma once

#include <string>
#include <string_view>

#include "automation/error.h"
#include "platform/database/recordset.h"
#include "types/talvex_types.h"

namespace talvex {

// Raises BudgetNotFound, naming the budget, when its header was not found: its lines then have neither
// currency nor holder.
inline void RequireBudget(const std::string& code, const platform::database::Recordset& budget,
                          std::string_view source) {
  if (!budget.Eof()) return;
  throw automation::Error(static_cast<std::int32_t>(TalvexErrors::BudgetNotFound), source,
                          "Budget '" + code + "' has lines but does not exist");
}

}  // namespace talvex
