// Decimal arithmetic on double-precision numbers: rounding and text, as people who count money expect them.
#pragma once

#include <cstdint>
#include <string>

namespace talvex::automation {

// A finite double as a decimal of at most 15 significant digits: (-1)^negative * digits * 10^exponent.
// Fifteen digits are what a double surely carries, so 1.015 is exactly 1.015 here, not the binary number
// beside it.
struct Decimal {
  bool negative = false;
  std::uint64_t digits = 0;
  int exponent = 0;
};
[[nodiscard]] Decimal ToDecimal(double value);

// `digits` shifted by 10^-dropped (dropped > 0) and rounded half to even.
[[nodiscard]] std::uint64_t DropDigits(std::uint64_t digits, int dropped) noexcept;

// The value rounded to `places` decimals (0 or more), half to even on its decimal value: Round(1.015, 2)
// is 1.02, Round(2.5, 0) is 2. A number so large that 15 digits end before those decimals is rounded with all
// the digits it has. A number that is not finite comes back as it is. Negative `places` raise error 5.
[[nodiscard]] double Round(double value, int places);

// The number as text: up to 15 significant digits, a point, no grouping, "1E+15" and "1E-05" form outside.
[[nodiscard]] std::string NumberText(double value);

}  // namespace talvex::automation
