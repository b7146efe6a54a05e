// The statements that several operations of the ledger send.
#pragma once

#include <string>
#include <string_view>

#include "platform/database/literals.h"

namespace talvex {

// The parents of a budget, one level up.
[[nodiscard]] inline std::string ParentsOf(std::string_view code) {
  return "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET=" +
         platform::database::TextLiteral(code);
}

}  // namespace talvex
