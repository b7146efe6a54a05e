// Conversions between kinds of value, in the one fixed culture: English, 24-hour, a point for decimals.
//
// Each raises error 13 (type mismatch) for a value that has no such form, error 94 (invalid use of Null) for
// Null and error 6 (overflow) for a number out of range. Empty counts as "", 0, False and the day zero.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "automation/variant.h"

namespace talvex::automation {

[[nodiscard]] std::string ToText(const Variant& value);
[[nodiscard]] double ToDouble(const Variant& value);
[[nodiscard]] std::int32_t ToInt32(const Variant& value);  // Rounds half to even.
[[nodiscard]] std::int16_t ToInt16(const Variant& value);  // Rounds half to even.
[[nodiscard]] bool ToBoolean(const Variant& value);        // Texts "True", "False" in any case, or a number.
[[nodiscard]] Currency ToCurrency(const Variant& value);   // Rounds half to even; a text is read exactly.
[[nodiscard]] Date ToDate(const Variant& value);

// Whether the value is a finite number, a Boolean, Empty, or a text that reads as a number.
[[nodiscard]] bool IsNumeric(const Variant& value);
// Whether the value is a date or a text that reads as one.
[[nodiscard]] bool IsDate(const Variant& value);

// The number that a text says: blanks around it, a sign, digits with grouping commas, a point, an exponent (E
// or D). Nothing for any other text, and nothing for a number too large for a double.
[[nodiscard]] std::optional<double> ParseNumber(std::string_view text);

// The whole number nearest to `value`, half to even; error 6 when it does not fit.
[[nodiscard]] std::int32_t RoundToInt32(double value);

}  // namespace talvex::automation
