#include "sheet/dates.h"

#include <cmath>

namespace talvex::sheet {

namespace {

constexpr std::int64_t kSecondsOfDay = 86400;

// Days since 1 January 1970.
constexpr std::int64_t kDayZero = -25569;    // 30 December 1899.
constexpr std::int64_t kStart1904 = -24107;  // 1 January 1904.
constexpr std::int64_t kLastDay = 2932896;   // 31 December 9999.

// The 1900 system has a 29 February 1900, which never was, as its day 60: the days before it count from one
// day later than those after it.
constexpr std::int64_t kNoSuchDay = 60;

std::int64_t DayOf(std::int64_t seconds) {
  const std::int64_t day = seconds / kSecondsOfDay;
  return seconds % kSecondsOfDay < 0 ? day - 1 : day;
}

}  // namespace

std::optional<std::int64_t> SecondsOfSerial(double serial, bool from_1904, bool only_time) {
  if (!(serial >= 0) || serial > 3e6) return std::nullopt;
  const auto seconds = static_cast<std::int64_t>(std::llround(serial * kSecondsOfDay));
  const std::int64_t day = seconds / kSecondsOfDay;
  std::int64_t start = from_1904 ? kStart1904 : kDayZero;
  if (only_time && day == 0) {
    start = kDayZero;
  } else if (!from_1904) {
    if (day == kNoSuchDay) return std::nullopt;
    if (day > 0 && day < kNoSuchDay) start += 1;
  }
  if (start + day > kLastDay) return std::nullopt;
  return start * kSecondsOfDay + seconds;
}

std::optional<double> SerialOfSeconds(std::int64_t seconds, bool from_1904) {
  const std::int64_t day = DayOf(seconds);
  const double time = static_cast<double>(seconds - day * kSecondsOfDay) / kSecondsOfDay;
  if (day == kDayZero) return time;
  std::int64_t count = day - (from_1904 ? kStart1904 : kDayZero);
  if (!from_1904 && count <= kNoSuchDay) count -= 1;
  if (count < (from_1904 ? 0 : 1)) return std::nullopt;
  return static_cast<double>(count) + time;
}

bool IsOnlyTime(std::int64_t seconds) { return DayOf(seconds) == kDayZero; }

}  // namespace talvex::sheet
