// Calendar dates with a time of day.
#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace talvex::automation {

// A date of the Gregorian calendar (years 1 to 9999) with a time of day to the second, in local time and
// without a zone. The default value is the day zero of the platform, 30 December 1899, whose text shows the
// time alone.
class Date {
 public:
  Date() noexcept;

  // Raises error 5 for a date that does not exist; TryCivil gives nothing instead.
  [[nodiscard]] static Date Civil(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                                  int second = 0);
  [[nodiscard]] static std::optional<Date> TryCivil(int year, unsigned month, unsigned day, int hour = 0,
                                                    int minute = 0, int second = 0) noexcept;

  // Reads "m/d/yyyy", "m-d-yyyy", "yyyy-mm-dd", "yyyy/mm/dd" or a date with an English month name ("15 March
  // 2026", "Mar 15, 2026", "15-Mar-2026"), each alone or followed by "hh:mm", "hh:mm:ss" (24 hours, or
  // AM/PM), after a blank or, as in "2026-03-15T14:30:05", a T. A year has four digits; month
  // and day have two behind it, one or two before it. Blanks around the text are ignored. Nothing for any
  // other text.
  [[nodiscard]] static std::optional<Date> Parse(std::string_view text) noexcept;

  // Reads exactly "YYYY-MM-DDTHH:MM:SS", the form in which tables hold dates.
  [[nodiscard]] static std::optional<Date> ParseIso(std::string_view text) noexcept;

  [[nodiscard]] int Year() const noexcept;
  [[nodiscard]] unsigned Month() const noexcept;
  [[nodiscard]] unsigned Day() const noexcept;
  [[nodiscard]] int Hour() const noexcept;
  [[nodiscard]] int Minute() const noexcept;
  [[nodiscard]] int Second() const noexcept;

  // The seconds since 1 January 1970 of this local time, for compact storage, and back.
  [[nodiscard]] std::int64_t Seconds() const noexcept { return moment_.time_since_epoch().count(); }
  [[nodiscard]] static Date FromSeconds(std::int64_t seconds) noexcept {
    return Date(std::chrono::local_seconds{std::chrono::seconds{seconds}});
  }

  // The same day at midnight.
  [[nodiscard]] Date DayOnly() const noexcept;

  // "3/15/2026", with a time of day "3/15/2026 14:30:05", on the day zero the time alone.
  [[nodiscard]] std::string ToText() const;
  // "14:30:05".
  [[nodiscard]] std::string TimeText() const;
  // "2026-03-15T14:30:05".
  [[nodiscard]] std::string ToIso() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): the 0 that a comparison is held against is no pointer.
  friend auto operator<=>(const Date&, const Date&) = default;

 private:
  explicit Date(std::chrono::local_seconds moment) noexcept : moment_(moment) {}
  [[nodiscard]] std::chrono::year_month_day Calendar() const noexcept;
  [[nodiscard]] std::int64_t SecondOfDay() const noexcept;

  std::chrono::local_seconds moment_;
};

}  // namespace talvex::automation
