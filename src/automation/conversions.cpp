#include "automation/conversions.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "automation/decimal.h"
#include "automation/error.h"
#include "automation/text.h"

namespace talvex::automation {

namespace {

// The value as an error message shows it: texts are quoted and cut, so that a message stays a line.
std::string Shown(const Variant& value) {
  if (!value.IsString()) return "a value of kind " + std::string(KindName(value.Type()));
  constexpr std::size_t kMost = 40;
  const std::string& text = value.As<std::string>();
  if (text.size() <= kMost) return "'" + text + "'";
  std::size_t end = kMost;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return "'" + text.substr(0, end) + "...'";
}

[[noreturn]] void RaiseMismatch(const Variant& value, std::string_view wanted) {
  throw Error(error_number::kTypeMismatch, kAutomationSource,
              "Type mismatch: " + Shown(value) + " is not " + std::string(wanted));
}

[[noreturn]] void RaiseNull() {
  throw Error(error_number::kInvalidUseOfNull, kAutomationSource, "Invalid use of Null");
}

[[noreturn]] void RaiseOverflow(std::string_view type) {
  throw Error(error_number::kOverflow, kAutomationSource,
              "Overflow: the number does not fit " + std::string(type));
}

template <class Integer>
Integer RoundTo(double value, std::string_view type) {
  const double rounded = Round(value, 0);
  if (!(rounded >= std::numeric_limits<Integer>::min() && rounded <= std::numeric_limits<Integer>::max())) {
    RaiseOverflow(type);
  }
  return static_cast<Integer>(rounded);
}

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Copies a run of digits from `rest` to `digits`, commas left out when they may stand there.
bool TakeDigits(std::string_view& rest, std::string& digits, bool commas) {
  bool found = false;
  while (!rest.empty() && (IsDigit(rest.front()) || (commas && found && rest.front() == ','))) {
    if (rest.front() != ',') digits += rest.front();
    found = true;
    rest.remove_prefix(1);
  }
  return found;
}

// Adds an exponent, when there is one, to `power`; one beyond any number's is cut to a bound that is so, too.
bool TakeExponent(std::string_view& rest, std::int64_t& power) {
  if (rest.empty()) return true;
  const char mark = FoldCase(rest.front());
  if (mark != 'e' && mark != 'd') return false;
  rest.remove_prefix(1);
  const bool negative = !rest.empty() && rest.front() == '-';
  if (!rest.empty() && (negative || rest.front() == '+')) rest.remove_prefix(1);
  std::string digits;
  if (!TakeDigits(rest, digits, false)) return false;
  std::int64_t exponent = std::numeric_limits<std::int32_t>::max();
  std::int32_t read = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), read).ec == std::errc()) exponent = read;
  power += negative ? -exponent : exponent;
  return true;
}

// What a text says to the last digit: digits x 10^power, without leading zeros. For 0 there is no digit.
struct ExactNumber {
  bool negative = false;
  std::string digits;
  std::int64_t power = 0;

  // How many digits stand before the point; 0 or less for a number below 1.
  [[nodiscard]] std::int64_t WholeDigits() const { return static_cast<std::int64_t>(digits.size()) + power; }
};

std::optional<ExactNumber> ReadNumber(std::string_view text) {
  std::string_view rest = Trimmed(text);
  ExactNumber number;
  number.negative = !rest.empty() && rest.front() == '-';
  if (!rest.empty() && (number.negative || rest.front() == '+')) rest.remove_prefix(1);
  bool found = TakeDigits(rest, number.digits, true);
  if (!rest.empty() && rest.front() == '.') {
    rest.remove_prefix(1);
    const std::size_t whole = number.digits.size();
    found = TakeDigits(rest, number.digits, false) || found;
    number.power = static_cast<std::int64_t>(whole) - static_cast<std::int64_t>(number.digits.size());
  }
  if (!found || !TakeExponent(rest, number.power) || !rest.empty()) return std::nullopt;
  number.digits.erase(0, number.digits.find_first_not_of('0'));
  return number;
}

// An amount is read as it is written: on the way through a double, a large one would lose its cents.
Currency ToExactCurrency(ExactNumber number) {
  number.power += 4;  // From here on it counts ten-thousandths.
  const std::int64_t whole = number.WholeDigits();
  if (number.digits.empty() || whole < 0) return {};
  constexpr std::int64_t kMostDigits = std::numeric_limits<std::int64_t>::digits10 + 1;
  if (whole > kMostDigits) RaiseOverflow("a currency value");
  const auto kept = static_cast<std::size_t>(whole);
  if (number.digits.size() < kept) number.digits.append(kept - number.digits.size(), '0');
  std::uint64_t units = 0;
  std::from_chars(number.digits.data(), number.digits.data() + kept, units);
  std::string rest = number.digits.substr(kept);
  rest.erase(rest.find_last_not_of('0') + 1);
  if (rest > "5" || (rest == "5" && units % 2 == 1)) ++units;
  constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (units > kLargest + (number.negative ? 1 : 0)) RaiseOverflow("a currency value");
  return Currency::FromUnits(static_cast<std::int64_t>(number.negative ? 0 - units : units));
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
  const auto number = ReadNumber(text);
  if (!number) return std::nullopt;
  const std::string plain =
      (number->negative ? "-0" : "0") + number->digits + "e" + std::to_string(number->power);
  double value = 0;
  const auto status = std::from_chars(plain.data(), plain.data() + plain.size(), value).ec;
  if (status == std::errc()) return value;
  // A number too small for a double is 0; one too large is none.
  return number->WholeDigits() <= 0 ? std::optional<double>(0.0) : std::nullopt;
}

std::string ToText(const Variant& value) {
  switch (value.Type()) {
    case Kind::Empty:
      return {};
    case Kind::Null:
      RaiseNull();
    case Kind::Boolean:
      return value.As<bool>() ? "True" : "False";
    case Kind::Int16:
      return std::to_string(value.As<std::int16_t>());
    case Kind::Int32:
      return std::to_string(value.As<std::int32_t>());
    case Kind::Double:
      return NumberText(value.As<double>());
    case Kind::Currency:
      return value.As<Currency>().ToText();
    case Kind::Date:
      return value.As<Date>().ToText();
    case Kind::String:
      return value.As<std::string>();
    default:
      RaiseMismatch(value, "a text");
  }
}

double ToDouble(const Variant& value) {
  switch (value.Type()) {
    case Kind::Empty:
      return 0;
    case Kind::Null:
      RaiseNull();
    case Kind::Boolean:
      return value.As<bool>() ? -1 : 0;
    case Kind::Int16:
      return value.As<std::int16_t>();
    case Kind::Int32:
      return value.As<std::int32_t>();
    case Kind::Double:
      return value.As<double>();
    case Kind::Currency:
      return value.As<Currency>().ToDouble();
    case Kind::String:
      if (const auto number = ParseNumber(value.As<std::string>())) return *number;
      [[fallthrough]];
    default:
      RaiseMismatch(value, "a number");
  }
}

std::int32_t RoundToInt32(double value) { return RoundTo<std::int32_t>(value, "a 32-bit integer"); }

std::int32_t ToInt32(const Variant& value) {
  if (value.Type() == Kind::Int32) return value.As<std::int32_t>();
  return RoundToInt32(ToDouble(value));
}

std::int16_t ToInt16(const Variant& value) {
  if (value.Type() == Kind::Int16) return value.As<std::int16_t>();
  return RoundTo<std::int16_t>(ToDouble(value), "a 16-bit integer");
}

bool ToBoolean(const Variant& value) {
  if (value.Type() == Kind::Boolean) return value.As<bool>();
  if (value.IsString()) {
    const std::string_view text = Trimmed(value.As<std::string>());
    if (SameFolded(text, "true")) return true;
    if (SameFolded(text, "false")) return false;
    if (!ParseNumber(text)) RaiseMismatch(value, "a Boolean");
  }
  return ToDouble(value) != 0;
}

Currency ToCurrency(const Variant& value) {
  if (value.Type() == Kind::Currency) return value.As<Currency>();
  if (value.IsString()) {
    if (auto number = ReadNumber(value.As<std::string>())) return ToExactCurrency(std::move(*number));
  }
  return Currency::FromDouble(ToDouble(value));
}

Date ToDate(const Variant& value) {
  switch (value.Type()) {
    case Kind::Empty:
      return {};
    case Kind::Null:
      RaiseNull();
    case Kind::Date:
      return value.As<Date>();
    case Kind::String:
      if (const auto date = Date::Parse(value.As<std::string>())) return *date;
      [[fallthrough]];
    default:
      RaiseMismatch(value, "a date");
  }
}

bool IsNumeric(const Variant& value) {
  switch (value.Type()) {
    case Kind::Empty:
    case Kind::Boolean:
    case Kind::Int16:
    case Kind::Int32:
    case Kind::Currency:
      return true;
    case Kind::Double:
      return std::isfinite(value.As<double>());
    case Kind::String:
      return ParseNumber(value.As<std::string>()).has_value();
    default:
      return false;
  }
}

bool IsDate(const Variant& value) {
  if (value.Type() == Kind::Date) return true;
  return value.IsString() && Date::Parse(value.As<std::string>()).has_value();
}

}  // namespace talvex::automation
