#include "automation/currency.h"

#include <cmath>
#include <limits>

#include "automation/decimal.h"
#include "automation/error.h"

namespace talvex::automation {

namespace {

constexpr int kPlaces = 4;
constexpr std::int64_t kScale = 10000;

[[noreturn]] void RaiseOverflow() {
  throw Error(error_number::kOverflow, kAutomationSource,
              "Overflow: the amount does not fit a currency value");
}

}  // namespace

Currency Currency::FromDouble(double value) {
  if (!std::isfinite(value)) {
    throw Error(error_number::kTypeMismatch, kAutomationSource,
                "Type mismatch: the amount is not a finite number");
  }
  // Below this bound, and at it, to which numbers may be rounded up, 15 significant digits hold all four
  // decimals. Far above it they would cut some that the double has.
  constexpr double kDecimalBound = 1e10;
  if (std::fabs(value) < kDecimalBound) {
    const Decimal decimal = ToDecimal(value);
    const int dropped = -(decimal.exponent + kPlaces);
    std::uint64_t magnitude = decimal.digits;
    if (dropped > 0) magnitude = DropDigits(magnitude, dropped);
    const auto units = static_cast<std::int64_t>(magnitude);
    return FromUnits(decimal.negative ? -units : units);
  }
  // Doubles are an eighth apart here, and the next one does not fit.
  constexpr double kLargest = 922337203685477.5;
  if (std::fabs(value) > kLargest) RaiseOverflow();
  const double whole = std::trunc(value);
  const double fraction = std::nearbyint((value - whole) * static_cast<double>(kScale));
  return FromUnits(static_cast<std::int64_t>(whole) * kScale + static_cast<std::int64_t>(fraction));
}

std::string Currency::ToFixedText() const {
  const bool negative = units_ < 0;
  const std::uint64_t magnitude =
      negative ? 0 - static_cast<std::uint64_t>(units_) : static_cast<std::uint64_t>(units_);
  std::string decimals = std::to_string(magnitude % kScale);
  decimals.insert(0, kPlaces - decimals.size(), '0');
  return (negative ? "-" : "") + std::to_string(magnitude / kScale) + "." + decimals;
}

std::string Currency::ToText() const {
  std::string text = ToFixedText();
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

Currency Currency::operator+(Currency other) const {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(units_, other.units_, &sum)) RaiseOverflow();
  return FromUnits(sum);
}

Currency Currency::operator-(Currency other) const {
  std::int64_t difference = 0;
  if (__builtin_sub_overflow(units_, other.units_, &difference)) RaiseOverflow();
  return FromUnits(difference);
}

}  // namespace talvex::automation
