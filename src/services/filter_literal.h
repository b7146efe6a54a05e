// Texts in the filters of record sets.
#pragma once

#include <string>

#include "services/lib_general.h"

namespace talvex {

// A text between quotes that a filter compares with exactly this text: its apostrophes are doubled, and a
// percent sign stands in brackets, since the filter language reads "[%]" as one.
[[nodiscard]] inline std::string FilterLiteral(const std::string& text) {
  return "'" + Lib_General::Gen_QuoteSQL(text) + "'";
}

}  // namespace talvex
