#include "component/verification.h"

#include "automation/conversions.h"
#include "automation/currency.h"
#include "ledger/line_amounts.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex::component {

namespace {

using Lib_General::Gen_NullToDouble;
using Lib_General::Gen_NullToString;

bool SameToFourDecimals(double a, double b) {
  return automation::Currency::FromDouble(a) == automation::Currency::FromDouble(b);
}

}  // namespace

Verification VerifyLines(const std::shared_ptr<platform::database::Connection>& connection) {
  Verification result;
  auto lines =
      Lib_SQL::Sql_GetReadonlyRecordset("SELECT * FROM BUDGETLINES ORDER BY BUDGETCODE, ID", connection);
  for (; !lines->Eof(); lines->MoveNext()) {
    ++result.lines;
    const Availability expected = AvailabilityOf(ReadLineAmounts(*lines));
    const Availability stored = {Gen_NullToDouble(lines->Value("AVAILABLEAMNT")),
                                 Gen_NullToDouble(lines->Value("AVAILABLEPERC"))};
    if (SameToFourDecimals(stored.amount, expected.amount) &&
        SameToFourDecimals(stored.fraction, expected.fraction))
      continue;
    result.drifts.push_back({Gen_NullToString(lines->Value("BUDGETCODE")),
                             automation::ToInt32(lines->Value("ID")), stored, expected});
  }
  Lib_SQL::CloseRecordset(lines);
  return result;
}

}  // namespace talvex::component
