// Lists of codes: those of budgets and of charge types.
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/statements.h"
#include "services/frame.h"

namespace talvex {

using automation::Dictionary;
using platform::database::TextLiteral;

std::shared_ptr<Dictionary> BudgetT::GetAllBudgets(std::string& iUserID) {
  if (automation::Trimmed(iUserID).empty())
    return CodesOf("SELECT BUDGETCODE FROM BUDGET ORDER BY BUDGETCODE ASC", "BUDGETCODE");
  return CodesOf(
      "SELECT BUDGETCODE FROM BUDGET WHERE USERID=" + TextLiteral(iUserID) + " ORDER BY BUDGETCODE ASC ",
      "BUDGETCODE");
}

std::shared_ptr<Dictionary> BudgetT::GetAllStandardBudgets() {
  return Reads("Talvex.BudgetT.getAllStandardBudgets",
               [] { return CodesOf("SELECT BUDGETCODE FROM BUDGET WHERE BUDGETTYPE=1", "BUDGETCODE"); });
}

std::shared_ptr<Dictionary> BudgetT::GetAllChargeTypes() {
  return CodesOf("SELECT CHARGETYPECODE FROM CHARGETYPES", "CHARGETYPECODE");
}

}  // namespace talvex
