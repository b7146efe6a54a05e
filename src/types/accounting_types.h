// The public enumerations of accounting.
#pragma once

#include <cstdint>

#include "automation/enumeration.h"

namespace talvex {

// What kind of ledger account it is.
TALVEX_ENUM(LedgerAccountType, std::int32_t, BalanceSheet = 1, ProfitAndLoss = 2, Miscellaneous = 3,
            Expense = 4);

// How a ledger account uses an accounting dimension. The spelling `Optionel` is published and kept as it is.
TALVEX_ENUM(DimensionUsage, std::int32_t, Mandatory = 1, Optionel = 2, NotUsed = 3);

// How a rule line compares a requisition property with its field value.
TALVEX_ENUM(RuleOperators, std::int32_t, Less = 1, LessEqual = 2, Greater = 3, GreaterEqual = 4, Equal = 5,
            NotEqual = 6, Contains = 7, Inside = 8, NotIn = 9);

}  // namespace talvex
