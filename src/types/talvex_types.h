// The public enumerations of the ledger.
#pragma once

#include <cstdint>
#include <string>

#include "automation/enumeration.h"

namespace talvex {

// The requisition state of a posted amount; each selects one running total of a budget line. The names are
// published and kept as they are, the lower-case `send` included.
TALVEX_ENUM(TalvexType, std::int32_t, Approved = 1, NotYetApproved = 2, send = 3, Closed = 4, Received = 5);

// The component's own error numbers: the automation object-error base (hexadecimal 80040000) plus 900, 901
// and 902.
TALVEX_ENUM(TalvexErrors, std::int32_t, BudgetNotFound = -2147220604, BudgetTypeNotFound = -2147220603,
            ChargeTypeNotFound = -2147220602);

// One step up the hierarchy: the codes of a budget and of one of its parents.
struct HoldParents {
  std::string Child;
  std::string Parent;
};

}  // namespace talvex
