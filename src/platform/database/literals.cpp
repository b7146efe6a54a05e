#include "platform/database/literals.h"

#include <array>
#include <charconv>
#include <cmath>

#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"

namespace talvex::platform::database {

std::string TextLiteral(std::string_view text) { return "'" + automation::Replaced(text, "'", "''") + "'"; }

std::string NumberLiteral(const automation::Variant& number) {
  if (number.Type() == automation::Kind::Int32) return std::to_string(number.As<std::int32_t>());
  const double value = automation::ToDouble(number);
  if (!std::isfinite(value)) {
    throw automation::Error(automation::error_number::kTypeMismatch, "Talvex.Platform.Database",
                            "Type mismatch: a number that is not finite");
  }
  std::array<char, 400> buffer{};  // The largest double has 309 digits in plain decimal.
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed).ptr;
  return {buffer.data(), end};
}

std::string DateLiteral(automation::Date date) { return "'" + date.DayOnly().ToIso() + "'"; }

}  // namespace talvex::platform::database
