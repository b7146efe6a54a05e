#include "automation/date.h"

#include <array>

#include "automation/error.h"
#include "automation/text.h"

namespace talvex::automation {

namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::local_days;
using std::chrono::seconds;
using std::chrono::year_month_day;

constexpr local_days kDayZero{
    year_month_day{std::chrono::year{1899}, std::chrono::month{12}, std::chrono::day{30}}};

void AppendPadded(std::string& text, int value, std::size_t width) {
  const std::string digits = std::to_string(value);
  text.append(width > digits.size() ? width - digits.size() : 0, '0').append(digits);
}

// Reads one date text from left to right; every step says whether it found what it looked for.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool AtEnd() const noexcept { return rest_.empty(); }

  bool Take(char c) noexcept {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // A run of digits, which `width` counts; a run longer than nine digits is no number of a date.
  bool Number(int& value, std::size_t& width) noexcept {
    width = 0;
    value = 0;
    while (width < rest_.size() && rest_[width] >= '0' && rest_[width] <= '9') {
      if (width == 9) return false;
      value = value * 10 + (rest_[width] - '0');
      ++width;
    }
    rest_.remove_prefix(width);
    return width > 0;
  }

  // An English month name, whole or its first three letters, with or without a point.
  bool MonthName(unsigned& month) noexcept {
    static constexpr std::array<std::string_view, 12> kNames = {
        "january", "february", "march",     "april",   "may",      "june",
        "july",    "august",   "september", "october", "november", "december"};
    std::size_t length = 0;
    while (length < rest_.size() && FoldCase(rest_[length]) >= 'a' && FoldCase(rest_[length]) <= 'z')
      ++length;
    const std::string_view word = rest_.substr(0, length);
    for (std::size_t i = 0; i < kNames.size(); ++i) {
      if (!SameFolded(word, kNames[i]) && !SameFolded(word, kNames[i].substr(0, 3))) continue;
      month = static_cast<unsigned>(i + 1);
      rest_.remove_prefix(length);
      Take('.');
      return true;
    }
    return false;
  }

  bool Blanks() noexcept {
    bool found = false;
    while (Take(' ')) found = true;
    return found;
  }

  // "AM" or "PM", any case; `afternoon` says which.
  bool DayHalf(bool& afternoon) noexcept {
    const std::string_view word = rest_.substr(0, 2);
    const bool morning = SameFolded(word, "am");
    afternoon = SameFolded(word, "pm");
    if (!morning && !afternoon) return false;
    rest_.remove_prefix(2);
    return true;
  }

 private:
  std::string_view rest_;
};

struct CalendarDay {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
};

bool ReadYear(Scanner& scan, int& year) noexcept {
  std::size_t width = 0;
  return scan.Number(year, width) && width == 4;
}

bool ReadDay(Scanner& scan, unsigned& day) noexcept {
  int number = 0;
  std::size_t width = 0;
  if (!scan.Number(number, width) || width > 2) return false;
  day = static_cast<unsigned>(number);
  return true;
}

// "March 15, 2026" from behind the month's place on.
bool ReadNamedMonthFirst(Scanner& scan, CalendarDay& result) noexcept {
  if (!scan.MonthName(result.month)) return false;
  scan.Blanks();
  if (!ReadDay(scan, result.day)) return false;
  const bool comma = scan.Take(',');
  const bool blank = scan.Blanks();
  return (comma || blank) && ReadYear(scan, result.year);
}

// What follows a leading number: a month name ("15 March 2026", "15-Mar-2026") or two more numbers.
bool ReadAfterNumber(Scanner& scan, int first, std::size_t width, CalendarDay& result) noexcept {
  const bool blank = scan.Blanks();
  const char separator = scan.Take('-') ? '-' : (scan.Take('/') ? '/' : ' ');
  if (scan.MonthName(result.month)) {
    if (width > 2) return false;
    result.day = static_cast<unsigned>(first);
    if (separator != ' ') return scan.Take(separator) && ReadYear(scan, result.year);
    scan.Take(',');
    return scan.Blanks() && ReadYear(scan, result.year);
  }
  if (blank || separator == ' ') return false;
  int second = 0;
  std::size_t second_width = 0;
  if (!scan.Number(second, second_width) || second_width > 2 || !scan.Take(separator)) return false;
  if (width == 4) {
    int third = 0;
    std::size_t third_width = 0;
    if (second_width != 2 || !scan.Number(third, third_width) || third_width != 2) return false;
    result = {first, static_cast<unsigned>(second), static_cast<unsigned>(third)};
    return true;
  }
  if (width > 2) return false;
  result.month = static_cast<unsigned>(first);
  result.day = static_cast<unsigned>(second);
  return ReadYear(scan, result.year);
}

bool ReadDate(Scanner& scan, CalendarDay& result) noexcept {
  int first = 0;
  std::size_t width = 0;
  if (scan.Number(first, width)) return ReadAfterNumber(scan, first, width, result);
  return width == 0 && ReadNamedMonthFirst(scan, result);
}

struct ClockTime {
  int hour = 0;
  int minute = 0;
  int second = 0;
};

bool ReadTwoDigits(Scanner& scan, int& number) noexcept {
  std::size_t width = 0;
  return scan.Number(number, width) && width <= 2;
}

bool ReadTime(Scanner& scan, ClockTime& time) noexcept {
  if (!ReadTwoDigits(scan, time.hour) || !scan.Take(':') || !ReadTwoDigits(scan, time.minute)) return false;
  if (scan.Take(':') && !ReadTwoDigits(scan, time.second)) return false;
  scan.Blanks();
  bool afternoon = false;
  if (!scan.DayHalf(afternoon)) return true;
  if (time.hour < 1 || time.hour > 12) return false;
  time.hour = time.hour % 12 + (afternoon ? 12 : 0);
  return true;
}

}  // namespace

Date::Date() noexcept : moment_(kDayZero) {}

std::optional<Date> Date::TryCivil(int year, unsigned month, unsigned day, int hour, int minute,
                                   int second) noexcept {
  const year_month_day calendar{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
  const bool day_exists = year >= 1 && year <= 9999 && month <= 12 && day <= 31 && calendar.ok();
  const bool time_exists = hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
  if (!day_exists || !time_exists) return std::nullopt;
  return Date(local_days{calendar} + seconds{(hour * 60 + minute) * 60 + second});
}

Date Date::Civil(int year, unsigned month, unsigned day, int hour, int minute, int second) {
  const auto date = TryCivil(year, month, day, hour, minute, second);
  if (!date)
    throw Error(error_number::kInvalidCall, kAutomationSource, "Invalid procedure call: no such date");
  return *date;
}

std::optional<Date> Date::Parse(std::string_view text) noexcept {
  Scanner scan(Trimmed(text));
  CalendarDay day;
  ClockTime time;
  if (!ReadDate(scan, day)) return std::nullopt;
  if (!scan.AtEnd()) {
    if (!scan.Take('T') && !scan.Blanks()) return std::nullopt;
    if (!ReadTime(scan, time) || !scan.AtEnd()) return std::nullopt;
  }
  return TryCivil(day.year, day.month, day.day, time.hour, time.minute, time.second);
}

std::optional<Date> Date::ParseIso(std::string_view text) noexcept {
  constexpr std::string_view kForm = "0000-00-00T00:00:00";
  if (text.size() != kForm.size()) return std::nullopt;
  std::array<int, kForm.size()> digit{};
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (kForm[i] == '0' ? !is_digit : text[i] != kForm[i]) return std::nullopt;
    digit[i] = text[i] - '0';
  }
  const auto pair = [&](std::size_t at) { return digit[at] * 10 + digit[at + 1]; };
  return TryCivil(pair(0) * 100 + pair(2), static_cast<unsigned>(pair(5)), static_cast<unsigned>(pair(8)),
                  pair(11), pair(14), pair(17));
}

year_month_day Date::Calendar() const noexcept { return year_month_day{floor<days>(moment_)}; }

std::int64_t Date::SecondOfDay() const noexcept { return (moment_ - floor<days>(moment_)).count(); }

int Date::Year() const noexcept { return static_cast<int>(Calendar().year()); }
unsigned Date::Month() const noexcept { return static_cast<unsigned>(Calendar().month()); }
unsigned Date::Day() const noexcept { return static_cast<unsigned>(Calendar().day()); }
int Date::Hour() const noexcept { return static_cast<int>(SecondOfDay() / 3600); }
int Date::Minute() const noexcept { return static_cast<int>(SecondOfDay() / 60 % 60); }
int Date::Second() const noexcept { return static_cast<int>(SecondOfDay() % 60); }

Date Date::DayOnly() const noexcept { return Date(std::chrono::local_seconds{floor<days>(moment_)}); }

std::string Date::TimeText() const {
  std::string text;
  AppendPadded(text, Hour(), 2);
  text += ':';
  AppendPadded(text, Minute(), 2);
  text += ':';
  AppendPadded(text, Second(), 2);
  return text;
}

std::string Date::ToText() const {
  if (floor<days>(moment_) == kDayZero) return TimeText();
  std::string text = std::to_string(Month()) + "/" + std::to_string(Day()) + "/";
  AppendPadded(text, Year(), 4);
  return SecondOfDay() == 0 ? text : text + " " + TimeText();
}

std::string Date::ToIso() const {
  std::string text;
  const auto calendar = Calendar();
  AppendPadded(text, static_cast<int>(calendar.year()), 4);
  text += '-';
  AppendPadded(text, static_cast<int>(static_cast<unsigned>(calendar.month())), 2);
  text += '-';
  AppendPadded(text, static_cast<int>(static_cast<unsigned>(calendar.day())), 2);
  return text + "T" + TimeText();
}

}  // namespace talvex::automation
