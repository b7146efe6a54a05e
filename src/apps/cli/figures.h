// Amounts, parts and days as people read them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "apps/cli/style.h"
#include "automation/date.h"

namespace talvex::apps {

// "1,234,567.50": two decimals, or four where two would hide something; "-" for an amount that was never set.
[[nodiscard]] std::string AmountText(std::optional<double> amount);

// A fraction as "43.57%"; "-" when there is none.
[[nodiscard]] std::string PercentText(std::optional<double> fraction);

// "2026-03-15", and the time of day when it is not midnight: "2026-03-15T14:30:05".
[[nodiscard]] std::string DayText(automation::Date date);

// What is left of a line.
struct Remainder {
  std::optional<double> amount;
  std::optional<double> fraction;  // Of what the line grants.

  friend bool operator==(const Remainder&, const Remainder&) = default;
};

// More is used than was granted. The fraction alone does not tell: it is 0 for a line that grants nothing.
[[nodiscard]] bool IsOverspent(const Remainder& remainder) noexcept;

// Green while there is plenty, yellow from a quarter down, red from a tenth.
[[nodiscard]] Colour ColourOf(const Remainder& remainder) noexcept;

// A bar of so many columns, full when everything is left and full of crosses when the line is overspent.
[[nodiscard]] std::string BarText(const Remainder& remainder, std::size_t columns, const Style& style);

}  // namespace talvex::apps
