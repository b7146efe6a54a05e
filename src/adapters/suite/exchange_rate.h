// The arithmetic of a conversion between two currencies.
#pragma once

#include "automation/currency.h"

namespace talvex::adapters::suite {

// amount x source_rate / target_rate, both rates finite and above 0. The result is the exact quotient of the
// rates' decimal values (15 significant digits, as they are written in a table), rounded once, half to even,
// to four decimals: no digit of a large amount is lost on the way. Raises 6 when the result does not fit.
[[nodiscard]] automation::Currency Exchanged(automation::Currency amount, double source_rate,
                                             double target_rate);

}  // namespace talvex::adapters::suite
