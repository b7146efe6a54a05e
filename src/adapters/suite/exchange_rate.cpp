#include "adapters/suite/exchange_rate.h"

#include <cstdint>
#include <limits>

#include "automation/decimal.h"
#include "automation/error.h"

namespace talvex::adapters::suite {

namespace {

using automation::Currency;
using automation::Decimal;

// An amount has at most 64 bits and the digits of a rate 50, so every product here fits.
__extension__ using Wide = unsigned __int128;

[[noreturn]] void RaiseOverflow() {
  throw automation::Error(automation::error_number::kOverflow, "Mirelo.Currency",
                          "Overflow: the converted amount does not fit a currency value");
}

// numerator x 10^shift / divisor, rounded half to even, `most` at most. Long division, digit by digit, so
// that the power of ten never has to be multiplied out.
std::uint64_t Quotient(Wide numerator, Wide divisor, int shift, std::uint64_t most) {
  for (; shift < 0; ++shift) {
    if (divisor / 2 > numerator) return 0;
    divisor *= 10;
  }
  Wide whole = numerator / divisor;
  Wide rest = numerator % divisor;
  for (; shift > 0 && whole <= most; --shift) {
    rest *= 10;
    whole = whole * 10 + rest / divisor;
    rest %= divisor;
  }
  const Wide missing = divisor - rest;
  if (rest > missing || (rest == missing && whole % 2 == 1)) ++whole;
  if (whole > most) RaiseOverflow();
  return static_cast<std::uint64_t>(whole);
}

}  // namespace

Currency Exchanged(Currency amount, double source_rate, double target_rate) {
  const bool negative = amount.Units() < 0;
  const auto units = static_cast<std::uint64_t>(amount.Units());
  // There is one negative amount more than there are positive ones.
  const std::uint64_t most = std::numeric_limits<std::int64_t>::max() + std::uint64_t{negative};
  const Decimal source = automation::ToDecimal(source_rate);
  const Decimal target = automation::ToDecimal(target_rate);
  const std::uint64_t magnitude = Quotient(static_cast<Wide>(negative ? 0 - units : units) * source.digits,
                                           target.digits, source.exponent - target.exponent, most);
  return Currency::FromUnits(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude));
}

}  // namespace talvex::adapters::suite
