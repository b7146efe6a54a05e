#include "apps/cli/figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "automation/decimal.h"

namespace talvex::apps {

namespace {

std::string Fixed(double value, int decimals) {
  const int length = std::snprintf(nullptr, 0, "%.*f", decimals, value);
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  static_cast<void>(std::snprintf(text.data(), text.size(), "%.*f", decimals, value));
  text.pop_back();
  return text;
}

// Commas between the thousands of a number with a decimal point.
std::string Grouped(std::string number) {
  const std::size_t first_digit = number.starts_with('-') ? 1 : 0;
  for (std::size_t at = number.find('.'); at > first_digit + 3;) number.insert(at -= 3, 1, ',');
  return number;
}

std::string Repeated(std::string_view mark, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text.append(mark);
  return text;
}

// How many of `steps` a part fills. The ends are kept for the very ends: a little left shows, and a little
// used too.
std::size_t StepsFilled(double fraction, std::size_t steps) {
  if (fraction <= 0) return 0;
  if (fraction >= 1) return steps;
  const auto filled = static_cast<std::size_t>(std::lround(fraction * static_cast<double>(steps)));
  return std::clamp<std::size_t>(filled, 1, steps - 1);
}

constexpr std::size_t kEighths = 8;
constexpr std::array<std::string_view, kEighths> kPartlyFull = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};

}  // namespace

std::string AmountText(std::optional<double> amount) {
  if (!amount) return "-";
  double exact = automation::Round(*amount, 4);
  if (exact == 0) exact = 0;  // Not "-0.00".
  return Grouped(Fixed(exact, exact == automation::Round(exact, 2) ? 2 : 4));
}

std::string PercentText(std::optional<double> fraction) {
  if (!fraction) return "-";
  double percent = automation::Round(*fraction * 100, 2);
  if (percent == 0) percent = 0;  // Not "-0.00%".
  return Fixed(percent, 2) + "%";
}

std::string DayText(automation::Date date) {
  const std::string iso = date.ToIso();
  return date == date.DayOnly() ? iso.substr(0, iso.find('T')) : iso;
}

bool IsOverspent(const Remainder& remainder) noexcept {
  const double fraction = remainder.fraction.value_or(0);
  return fraction < 0 || (fraction == 0 && remainder.amount.value_or(0) < 0);
}

Colour ColourOf(const Remainder& remainder) noexcept {
  constexpr double kLittle = 0.25;
  constexpr double kVeryLittle = 0.1;
  const double fraction = remainder.fraction.value_or(0);
  if (fraction > kLittle) return Colour::Green;
  return fraction > kVeryLittle ? Colour::Yellow : Colour::Red;
}

std::string BarText(const Remainder& remainder, std::size_t columns, const Style& style) {
  if (IsOverspent(remainder)) return Repeated(style.Choose("╳", "x"), columns);
  const double fraction = remainder.fraction.value_or(0);
  if (!style.unicode) {
    const std::size_t filled = StepsFilled(fraction, columns);
    return Repeated("#", filled) + Repeated(".", columns - filled);
  }
  const std::size_t filled = StepsFilled(fraction, columns * kEighths);
  const std::string_view partly = kPartlyFull[filled % kEighths];
  const std::size_t used = filled / kEighths + (partly.empty() ? 0 : 1);
  return Repeated("█", filled / kEighths).append(partly).append(Repeated("░", columns - used));
}

}  // namespace talvex::apps
