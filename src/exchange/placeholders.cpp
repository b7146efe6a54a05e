#include "exchange/placeholders.h"

#include <algorithm>

#include "automation/text.h"
#include "exchange/failure.h"

namespace talvex {

namespace {

constexpr std::string_view kBegin = "[%";
constexpr std::string_view kEnd = "%]";

// Digits without leading zeros, perhaps with a sign and decimals. "007" and "1E5" are texts: as numbers they
// would come out as something else.
bool IsPlainNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const auto digits = [](std::string_view part) {
    return !part.empty() && part.find_first_not_of("0123456789") == std::string_view::npos;
  };
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  if (!digits(whole) || (whole.size() > 1 && whole.front() == '0')) return false;
  return point == std::string_view::npos || digits(text.substr(point + 1));
}

std::string WithDoubledQuotes(std::string_view value) { return automation::Replaced(value, "\"", "\"\""); }

// Inside a text of the formula the value is a part of that; elsewhere it is a constant.
std::string InFormula(const std::string& value, bool in_text) {
  if (in_text) return WithDoubledQuotes(value);
  return IsPlainNumber(value) ? value : "\"" + WithDoubledQuotes(value) + "\"";
}

// What a placeholder other than [%VALUE%] stands for.
std::string PartOf(std::string_view address, std::string_view name) {
  const std::size_t digits = address.find_first_of("0123456789");
  if (name == "COLUMN") return std::string(address.substr(0, digits));
  if (name == "ROW") return std::string(address.substr(digits));
  if (name == "ADDRESS") return std::string(address);
  throw Failure(failure_label::kPlaceholder, "The placeholder [%" + std::string(name.substr(0, 20)) +
                                                 "%] cannot be filled in at " + std::string(address));
}

// `shown` gives the value its form; it is told whether it stands in a text in quotes.
template <class Shown>
std::string FilledIn(std::string_view text, std::string_view address, const std::optional<std::string>& value,
                     Shown shown) {
  std::string filled;
  bool in_text = false;
  for (std::size_t begin = text.find(kBegin); begin != std::string_view::npos; begin = text.find(kBegin)) {
    const std::string_view before = text.substr(0, begin);
    in_text ^= std::count(before.begin(), before.end(), '"') % 2 == 1;
    filled.append(before);
    text.remove_prefix(begin + kBegin.size());
    const std::size_t end = text.find(kEnd);
    // Without an end there is no name, which is refused as an unknown one is.
    const std::string_view name = end == std::string_view::npos ? std::string_view() : text.substr(0, end);
    filled.append(name == "VALUE" && value ? shown(*value, in_text) : PartOf(address, name));
    text.remove_prefix(end + kEnd.size());
  }
  return filled.append(text);
}

}  // namespace

bool HasPlaceholders(std::string_view text) { return text.find(kBegin) != std::string_view::npos; }

std::string FillInText(std::string_view text, std::string_view address,
                       const std::optional<std::string>& value) {
  return FilledIn(text, address, value, [](const std::string& plain, bool /*in_text*/) { return plain; });
}

std::string FillInFormula(std::string_view formula, std::string_view address,
                          const std::optional<std::string>& value) {
  return FilledIn(formula, address, value, InFormula);
}

}  // namespace talvex
