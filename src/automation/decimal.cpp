#include "automation/decimal.h"

#include <array>
#include <charconv>
#include <cmath>

#include "automation/error.h"
#include "automation/text.h"

namespace talvex::automation {

namespace {

constexpr int kSignificantDigits = 15;
constexpr int kPowers = 20;

constexpr std::array<std::uint64_t, kPowers> kPowersOfTen = [] {
  std::array<std::uint64_t, kPowers> powers{};
  std::uint64_t power = 1;
  for (auto& entry : powers) {
    entry = power;
    power *= 10;  // The last step wraps, and nobody reads it.
  }
  return powers;
}();

// The double itself, not its first 15 digits, rounded half to even; for a number that is not whole.
double RoundAllDigits(double value, int places) {
  // At most a sign, 16 digits before the point (a larger double is whole), the point and 22 decimals.
  std::array<char, 48> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, places)
          .ptr;
  double rounded = value;
  std::from_chars(buffer.data(), end, rounded);
  return rounded;
}

}  // namespace

Decimal ToDecimal(double value) {
  // "d.dddddddddddddde+XX"
  std::array<char, 40> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 std::chars_format::scientific, kSignificantDigits - 1)
                       .ptr;
  Decimal result;
  const char* at = buffer.data();
  if (*at == '-') {
    result.negative = true;
    ++at;
  }
  for (; at != end && *at != 'e'; ++at) {
    if (*at != '.') result.digits = result.digits * 10 + static_cast<std::uint64_t>(*at - '0');
  }
  int power = 0;
  if (at != end) {
    ++at;
    if (at != end && *at == '+') ++at;
    std::from_chars(at, end, power);
  }
  result.exponent = power - (kSignificantDigits - 1);
  return result;
}

std::uint64_t DropDigits(std::uint64_t digits, int dropped) noexcept {
  if (dropped >= kPowers) return 0;
  const std::uint64_t unit = kPowersOfTen[static_cast<std::size_t>(dropped)];
  std::uint64_t quotient = digits / unit;
  const std::uint64_t remainder = digits % unit;
  const std::uint64_t half = unit / 2;
  if (remainder > half || (remainder == half && quotient % 2 == 1)) ++quotient;
  return quotient;
}

double Round(double value, int places) {
  if (places < 0) {
    throw Error(error_number::kInvalidCall, "Talvex.Automation", "Invalid procedure call: negative decimals");
  }
  constexpr int kMostPlaces = 22;  // 10^22 is the largest power of ten that a double holds exactly.
  if (places > kMostPlaces || !std::isfinite(value) || value == std::trunc(value)) return value;
  const Decimal decimal = ToDecimal(value);
  const int dropped = -(decimal.exponent + places);
  if (dropped <= 0) return RoundAllDigits(value, places);
  const std::uint64_t kept = DropDigits(decimal.digits, dropped);
  // Both are exact in a double, so the quotient is the nearest double to the result.
  const double magnitude = static_cast<double>(kept) / std::pow(10.0, places);
  return decimal.negative ? -magnitude : magnitude;
}

std::string NumberText(double value) {
  if (value == 0) return "0";
  std::array<char, 40> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 std::chars_format::general, kSignificantDigits)
                       .ptr;
  return Raised(std::string_view(buffer.data(), static_cast<std::size_t>(end - buffer.data())));
}

}  // namespace talvex::automation
