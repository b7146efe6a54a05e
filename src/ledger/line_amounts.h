// The amounts of a budget line, read from a record set.
#pragma once

#include "ledger/availability.h"
#include "platform/database/recordset.h"
#include "services/lib_general.h"

namespace talvex {

// The amounts of the current row of a BUDGETLINES record set; Null counts as 0.
[[nodiscard]] inline LineAmounts ReadLineAmounts(const platform::database::Recordset& line) {
  const auto amount = [&](std::string_view column) {
    return Lib_General::Gen_NullToDouble(line.Value(column));
  };
  return {amount("BUDGETAMNT"),          amount("USEDAPPROVEDAMNT"), amount("USEDSENDAMNT"),
          amount("USEDNOTAPPROVEDAMNT"), amount("USEDRECEIVEDAMNT"), amount("USEDCLOSEDAMNT")};
}

}  // namespace talvex
