// The comparisons that rule lines make.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "automation/variant.h"
#include "types/accounting_types.h"

namespace talvex {

// A requisition property as rule lines compare it: what it says as a number, a date and a text is worked out
// once, however many lines look at it.
class PropertyValue {
 public:
  // Null counts as the empty text. What has no text (an array, an object) raises 13.
  explicit PropertyValue(const automation::Variant& value);

  [[nodiscard]] const std::optional<double>& Number() const noexcept { return number_; }
  [[nodiscard]] const std::optional<automation::Date>& Date() const noexcept { return date_; }
  [[nodiscard]] const std::string& Text() const noexcept { return text_; }  // Not trimmed.

 private:
  std::string text_;
  std::optional<double> number_;
  std::optional<automation::Date> date_;
};

// Whether a rule line holds. Two numbers compare as numbers, two dates as dates, anything else as texts, byte
// by byte. `field_value` is trimmed already. A comparison that is none of the operators counts as true.
[[nodiscard]] bool LineHolds(const PropertyValue& property, RuleOperators comparison,
                             std::string_view field_value);

}  // namespace talvex
