// Reads the filter language.
#pragma once

#include <string_view>

#include "platform/database/filter_condition.h"

namespace talvex::platform::database {

// The condition that the text says about columns of `rows`. Raises 3001 for a text that is no filter, naming
// the position (in characters, from 1) and what stands there, and 3265 for a column that is not there.
[[nodiscard]] Condition ParseFilter(std::string_view text, const RowSet& rows);

}  // namespace talvex::platform::database
