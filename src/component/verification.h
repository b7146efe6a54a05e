// Checking the ledger's own books.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ledger/availability.h"
#include "platform/database/connection.h"

namespace talvex::component {

// A line whose stored availability is not what its amounts say.
struct LineDrift {
  std::string budget_code;
  std::int32_t line_id = 0;
  Availability stored;
  Availability expected;
};

// A line that belongs to no budget, since its budget has no header row: nothing can be posted to it.
struct LineWithoutBudget {
  std::string budget_code;
  std::int32_t line_id = 0;
};

// Both lists are ordered by budget code and line number.
struct Verification {
  std::int32_t lines = 0;  // How many lines were looked at.
  std::vector<LineDrift> drifts;
  std::vector<LineWithoutBudget> without_budget;
  [[nodiscard]] bool AllRight() const noexcept { return drifts.empty() && without_budget.empty(); }
};

// Recomputes what is available on every budget line and compares it with what is stored, both to four
// decimals, and looks for the line's budget. Only reads. `connection` stays open.
[[nodiscard]] Verification VerifyLines(const std::shared_ptr<platform::database::Connection>& connection);

}  // namespace talvex::component
