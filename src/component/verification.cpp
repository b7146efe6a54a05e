#include "component/verification.h"

#include "automation/codes.h"
#include "automation/conversions.h"
#include "automation/decimal.h"
#include "ledger/line_amounts.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex::component {

namespace {

using Lib_General::Gen_NullToDouble;
using Lib_General::Gen_NullToString;

// As plain numbers: a total may be larger than any amount that can be posted.
bool SameToFourDecimals(double a, double b) { return automation::Round(a, 4) == automation::Round(b, 4); }

automation::CodeSet CodesOfBudgets(const std::shared_ptr<platform::database::Connection>& connection) {
  automation::CodeSet codes;
  auto budgets = Lib_SQL::Sql_GetReadonlyRecordset("SELECT BUDGETCODE FROM BUDGET", connection);
  for (; !budgets->Eof(); budgets->MoveNext()) codes.insert(Gen_NullToString(budgets->Value("BUDGETCODE")));
  Lib_SQL::CloseRecordset(budgets);
  return codes;
}

}  // namespace

Verification VerifyLines(const std::shared_ptr<platform::database::Connection>& connection) {
  Verification result;
  const automation::CodeSet budgets = CodesOfBudgets(connection);
  auto lines =
      Lib_SQL::Sql_GetReadonlyRecordset("SELECT * FROM BUDGETLINES ORDER BY BUDGETCODE, ID", connection);
  for (; !lines->Eof(); lines->MoveNext()) {
    ++result.lines;
    const std::string budget_code = Gen_NullToString(lines->Value("BUDGETCODE"));
    const std::int32_t line_id = automation::ToInt32(lines->Value("ID"));
    if (!budgets.contains(budget_code)) result.without_budget.push_back({budget_code, line_id});
    const Availability expected = AvailabilityOf(ReadLineAmounts(*lines));
    const Availability stored = {Gen_NullToDouble(lines->Value("AVAILABLEAMNT")),
                                 Gen_NullToDouble(lines->Value("AVAILABLEPERC"))};
    if (SameToFourDecimals(stored.amount, expected.amount) &&
        SameToFourDecimals(stored.fraction, expected.fraction))
      continue;
    result.drifts.push_back({budget_code, line_id, stored, expected});
  }
  Lib_SQL::CloseRecordset(lines);
  return result;
}

}  // namespace talvex::component
