// Trees of budgets that several write to at the same time.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>

#include "automation/conversions.h"
#include "platform/database/recordset.h"
#include "support/test_installation.h"

namespace talvex::test {

// A writer that loses every time is a failure of the test, not of the machine's speed.
inline constexpr int kAttempts = 10000;

// A budget in EUR below a parent, unless that is empty, held by "anna", with a line for the year 2026.
inline void AddBudget(const TestInstallation& site, const std::string& code, const std::string& parent,
                      int amount) {
  if (site.Rows("SELECT CURRENCYCODE FROM CURRENCY").empty())
    site.Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
  site.Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, USERID) VALUES ('" + code +
           "', 1, 'EUR', 'anna')");
  site.Sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT) VALUES ('" + code +
           "', '2026-01-01T00:00:00', '2026-12-31T00:00:00', " + std::to_string(amount) + ")");
  if (!parent.empty())
    site.Sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('" + parent + "', '" + code +
             "')");
}

// The approved amount on the budget's line; 0 when nothing was posted.
inline std::int64_t UsedCents(const TestInstallation& site, const std::string& code) {
  const auto row = site.Host().Connect()->Execute(
      "SELECT USEDAPPROVEDAMNT FROM BUDGETLINES WHERE BUDGETCODE='" + code + "'", nullptr, std::nullopt);
  const automation::Variant used = row->Value(0U);
  return used.IsNull() ? 0 : std::llround(automation::ToDouble(used) * 100);
}

}  // namespace talvex::test
