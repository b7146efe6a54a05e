// Fixed-point money.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace talvex::automation {

// An amount with exactly four decimals, held as a 64-bit whole number of ten-thousandths:
// -922,337,203,685,477.5808 to 922,337,203,685,477.5807. Results outside raise error 6 (overflow).
class Currency {
 public:
  constexpr Currency() = default;

  [[nodiscard]] static constexpr Currency FromUnits(std::int64_t ten_thousandths) noexcept {
    Currency result;
    result.units_ = ten_thousandths;
    return result;
  }
  // Rounds half to even. NaN and infinity raise error 13: they are no numbers.
  [[nodiscard]] static Currency FromDouble(double value);

  [[nodiscard]] constexpr std::int64_t Units() const noexcept { return units_; }
  [[nodiscard]] constexpr double ToDouble() const noexcept { return static_cast<double>(units_) / 10000.0; }
  // As few digits as say it exactly: "12.34", "-0.0001", "7".
  [[nodiscard]] std::string ToText() const;
  // All four decimals: "12.3400".
  [[nodiscard]] std::string ToFixedText() const;

  [[nodiscard]] Currency operator+(Currency other) const;
  [[nodiscard]] Currency operator-(Currency other) const;
  friend constexpr auto operator<=>(Currency, Currency) = default;

 private:
  std::int64_t units_ = 0;
};

}  // namespace talvex::automation
