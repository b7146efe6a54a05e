// A ledger account on its way between callers and the table.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "automation/class_info.h"

namespace talvex {

// The public class "Talvex.LedgerAccount": a plain holder of values. Dates are dates or Empty.
class LedgerAccount final : public automation::Object {
  TALVEX_CLASS(LedgerAccount, "Talvex.LedgerAccount",
               "A ledger account, as Talvex.BudgetManager reads and writes it.");

 public:
  TALVEX_NAMED_PROPERTY(std::string, Code, "LedgerAccount", "The account code.");
  TALVEX_PROPERTY(automation::Variant, LedgerAccountDesc, "The description.");
  TALVEX_PROPERTY(automation::Variant, DateFrom, "The first moment at which it is valid; Empty for none.");
  TALVEX_PROPERTY(automation::Variant, DateTo,
                  "The last moment at which it is valid, so a day alone ends as it begins; Empty for none.");
  TALVEX_PROPERTY(std::int16_t, AccountType, "1 BalanceSheet, 2 ProfitAndLoss, 3 Miscellaneous, 4 Expense.");
  TALVEX_PROPERTY(std::int16_t, Dimension1, "The first dimension: 1 Mandatory, 2 Optionel, 3 NotUsed.");
  TALVEX_PROPERTY(std::int16_t, Dimension2, "The second dimension: 1 Mandatory, 2 Optionel, 3 NotUsed.");
  TALVEX_PROPERTY(std::int16_t, Dimension3, "The third dimension: 1 Mandatory, 2 Optionel, 3 NotUsed.");
  TALVEX_PROPERTY(std::int16_t, Dimension4, "The fourth dimension: 1 Mandatory, 2 Optionel, 3 NotUsed.");
  TALVEX_PROPERTY(std::int16_t, Dimension5, "The fifth dimension: 1 Mandatory, 2 Optionel, 3 NotUsed.");
};

}  // namespace talvex
