// Texts of the markup as what a cell holds.
#pragma once

#include <string>

#include "automation/variant.h"
#include "exchange/markup.h"

namespace talvex {

// The text as a value of that type, which is none of a formula; Empty for an empty text. A text that is not
// of the type is a Failure (SLBBU0347).
[[nodiscard]] automation::Variant TypedValue(markup::ValueType type, const std::string& text);

}  // namespace talvex
