// The lines of budgets in force on a day.
#pragma once

#include <optional>
#include <string>

#include "apps/cli/layout.h"
#include "apps/cli/ledger_rows.h"
#include "apps/cli/session.h"
#include "automation/codes.h"

namespace talvex::apps {

// Each budget's line is asked of the ledger once.
class LinesInForce {
 public:
  LinesInForce(Session& session, Connection& connection, automation::Date day)
      : connection_(connection), ledger_(session.Create("Talvex.BudgetT")), day_(day) {}

  const std::optional<LineRow>& Of(const std::string& code);

 private:
  Connection& connection_;
  automation::ObjectRef ledger_;
  automation::Date day_;
  automation::CodeMap<std::optional<LineRow>> lines_;
};

// What is available on a line, as three cells: the amount, a short bar and the part in percent.
void AddAvailable(const std::optional<LineRow>& line, const Style& style, Table::Row& cells);

// What is known of a budget, and what is available on its line in force, as listings show it.
[[nodiscard]] Json BudgetSummaryJson(const std::string& code, const BudgetRow* budget,
                                     const std::optional<LineRow>& line);

// A table of budgets with their type, currency, holder, and what is available on the day.
[[nodiscard]] Table BudgetTable(Session& session, Connection& connection,
                                const std::vector<std::string>& codes, automation::Date day);
// The same for machines.
[[nodiscard]] Json BudgetListJson(Session& session, Connection& connection,
                                  const std::vector<std::string>& codes, automation::Date day);

}  // namespace talvex::apps
