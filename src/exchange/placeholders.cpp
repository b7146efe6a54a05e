#include "exchange/placeholders.h"

#include <algorithm>
#include <cctype>

#include "automation/text.h"
#include "exchange/failure.h"

namespace talvex {

namespace {

constexpr std::string_view kBegin = "[%";
constexpr std::string_view kEnd = "%]";

// Digits without leading zeros, perhaps with a sign and decimals, as many as a number keeps. "007" and "1E5"
// are texts: as numbers they would come out as something else.
bool IsPlainNumber(std::string_view text) {
  constexpr std::ptrdiff_t kDigitsOfANumber = 15;
  if (text.starts_with('-')) text.remove_prefix(1);
  const auto digits = [](std::string_view part) {
    return !part.empty() && part.find_first_not_of("0123456789") == std::string_view::npos;
  };
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  if (!digits(whole) || (whole.size() > 1 && whole.front() == '0')) return false;
  if (std::count_if(text.begin(), text.end(), [](char c) { return c != '.'; }) > kDigitsOfANumber)
    return false;
  return point == std::string_view::npos || digits(text.substr(point + 1));
}

std::string WithDoubledQuotes(std::string_view value) { return automation::Replaced(value, "\"", "\"\""); }

[[noreturn]] void Refuse(const std::string& what) { throw Failure(failure_label::kPlaceholder, what); }

// What a placeholder other than [%VALUE%] stands for.
std::string PartOf(std::string_view address, std::string_view name) {
  const std::size_t digits = address.find_first_of("0123456789");
  if (name == "COLUMN") return std::string(address.substr(0, digits));
  if (name == "ROW") return std::string(address.substr(digits));
  if (name == "ADDRESS") return std::string(address);
  Refuse("The placeholder [%" + std::string(name.substr(0, 20)) + "%] cannot be filled in at " +
         std::string(address));
}

// `shown` gives the value its form: it is told what stands before it, filled in, and what comes behind it.
template <class Shown>
std::string FilledIn(std::string_view text, std::string_view address, const std::optional<std::string>& value,
                     Shown shown) {
  std::string filled;
  for (std::size_t begin = text.find(kBegin); begin != std::string_view::npos; begin = text.find(kBegin)) {
    filled.append(text.substr(0, begin));
    text.remove_prefix(begin + kBegin.size());
    const std::size_t end = text.find(kEnd);
    // Without an end there is no name, which is refused as an unknown one is.
    const std::string_view name = end == std::string_view::npos ? std::string_view() : text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? 0 : end + kEnd.size());
    filled.append(name == "VALUE" && value ? shown(*value, filled, text) : PartOf(address, name));
  }
  return filled.append(text);
}

// Where a formula is at: a value means something else in each.
enum class Place { Outside, InText, InSheetName };

// The place behind a piece of a formula. A doubled quote ends a text and begins it again.
Place Behind(Place place, std::string_view piece) {
  for (const char c : piece) {
    if (c == '"' && place != Place::InSheetName) {
      place = place == Place::InText ? Place::Outside : Place::InText;
    } else if (c == '\'' && place != Place::InText) {
      place = place == Place::InSheetName ? Place::Outside : Place::InSheetName;
    }
  }
  return place;
}

// Whether the text ends with a number whose exponent is yet to come: "1E" and "1.5e", but not "Rate1E".
bool EndsWithExponent(std::string_view text) {
  if (text.empty() || (text.back() != 'E' && text.back() != 'e')) return false;
  text.remove_suffix(1);
  const std::size_t begin = text.find_last_not_of("0123456789.") + 1;  // 0 when there is nothing else.
  if (begin == text.size()) return false;
  if (begin == 0) return true;
  const auto before = static_cast<unsigned char>(text[begin - 1]);
  const bool in_name = std::isalnum(before) != 0 || before == '_' || before == '$' || before >= 0x80;
  return !in_name;
}

// Whether a constant can stand there: between operators, separators, brackets or the ends. Next to anything
// else it would become a part of that, as "7" does in "A7", in "7:9" and in "1E+7".
bool StandsAlone(std::string_view before, std::string_view behind) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t last = before.find_last_not_of(kBlanks);
  const std::size_t next = behind.find_first_not_of(kBlanks);
  const auto is_one_of = [](char c, std::string_view marks) {
    return marks.find(c) != std::string_view::npos;
  };
  if (last != std::string_view::npos && is_one_of(before[last], "+-") &&
      EndsWithExponent(before.substr(0, last))) {
    return false;
  }
  return (last == std::string_view::npos || is_one_of(before[last], "=+-*/^&<>,;({")) &&
         (next == std::string_view::npos || is_one_of(behind[next], "=+-*/^&<>,;)}%"));
}

}  // namespace

bool HasPlaceholders(std::string_view text) { return text.find(kBegin) != std::string_view::npos; }

std::string FillInText(std::string_view text, std::string_view address,
                       const std::optional<std::string>& value) {
  const auto plain = [](const std::string& data, std::string_view, std::string_view) { return data; };
  return FilledIn(text, address, value, plain);
}

std::string FillInFormula(std::string_view formula, std::string_view address,
                          const std::optional<std::string>& value) {
  Place place = Place::Outside;
  std::size_t seen = 0;
  const auto constant = [&](const std::string& data, std::string_view before, std::string_view behind) {
    place = Behind(place, before.substr(seen));
    seen = before.size();
    if (place == Place::InText) return WithDoubledQuotes(data);
    if (place == Place::InSheetName || !StandsAlone(before, behind)) {
      Refuse(
          "The value for " + std::string(address) +
          " can only be a constant of the formula or a part of a text in it, and here it would be neither");
    }
    return IsPlainNumber(data) ? data : "\"" + WithDoubledQuotes(data) + "\"";
  };
  return FilledIn(formula, address, value, constant);
}

}  // namespace talvex
