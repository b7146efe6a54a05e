// Values as literals in SQL text.
#pragma once

#include <string>
#include <string_view>

#include "automation/date.h"
#include "automation/variant.h"

namespace talvex::platform::database {

// The text between single quotes, every quote in it doubled.
[[nodiscard]] std::string TextLiteral(std::string_view text);

// The number in plain decimal, as many digits as name it exactly. What is not a finite number raises 13.
[[nodiscard]] std::string NumberLiteral(const automation::Variant& number);

// The calendar day alone, 'YYYY-MM-DDT00:00:00': the first and the last day of a period count whole, whatever
// the time.
[[nodiscard]] std::string DateLiteral(automation::Date date);

}  // namespace talvex::platform::database
