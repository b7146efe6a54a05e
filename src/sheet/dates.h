// Dates and times as workbooks count them: days since the start of one of two date systems.
#pragma once

#include <cstdint>
#include <optional>

namespace talvex::sheet {

// The seconds since 1 January 1970 of a day number with its time of day, to the nearest second; nothing for
// one that is no date up to the year 9999. A number below 1 is a time of day alone where the system counts
// from 1, and where it is shown without a date: it falls on the day zero, 30 December 1899.
[[nodiscard]] std::optional<std::int64_t> SecondsOfSerial(double serial, bool from_1904, bool only_time);

// The way back; nothing for a date before the system's first day that is not a time of day alone.
[[nodiscard]] std::optional<double> SerialOfSeconds(std::int64_t seconds, bool from_1904);

// Whether it is a time of day alone.
[[nodiscard]] bool IsOnlyTime(std::int64_t seconds);

}  // namespace talvex::sheet
