#include "automation/date.h"

#include <array>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace talvex::automation {
namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kFirstDay = -719162;  // 1 January of the year 1, counted from 1 January 1970.

// The calendar counted by hand, one day after the other.
struct Calendar {
  int year = 1;
  unsigned month = 1;
  unsigned day = 1;

  [[nodiscard]] unsigned DaysInMonth() const {
    constexpr std::array<unsigned, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return kDays[month - 1] + (month == 2 && leap ? 1 : 0);
  }
  void Next() {
    if (day++ < DaysInMonth()) return;
    day = 1;
    if (month++ < 12) return;
    month = 1;
    ++year;
  }
};

std::string Padded(std::size_t width, std::int64_t number) {
  const std::string digits = std::to_string(number);
  return std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
}

TEST(Date, AgreesWithACalendarCountedByHandOverAllItsYears) {
  std::int64_t number = kFirstDay;
  for (Calendar calendar; calendar.year <= 9999; calendar.Next(), ++number) {
    const auto date = Date::TryCivil(calendar.year, calendar.month, calendar.day);
    ASSERT_TRUE(date) << calendar.year << "-" << calendar.month << "-" << calendar.day;
    ASSERT_EQ(date->Seconds(), number * kDay) << date->ToIso();
    ASSERT_EQ(date->Year(), calendar.year);
    ASSERT_EQ(date->Month(), calendar.month);
    ASSERT_EQ(date->Day(), calendar.day);
    if (calendar.day == calendar.DaysInMonth()) {
      for (unsigned missing = calendar.day + 1; missing <= 33; ++missing) {
        ASSERT_FALSE(Date::TryCivil(calendar.year, calendar.month, missing))
            << date->ToIso() << " " << missing;
      }
    }
  }
  EXPECT_EQ(number, Date::Civil(9999, 12, 31).Seconds() / kDay + 1);
}

TEST(Date, RefusesWhatDoesNotExist) {
  struct Row {
    int year;
    unsigned month, day;
    int hour, minute, second;
  };
  constexpr Row kRows[] = {
      {2026, 2, 30, 0, 0, 0},        {2026, 2, 29, 0, 0, 0}, {1900, 2, 29, 0, 0, 0}, {2026, 13, 1, 0, 0, 0},
      {2026, 0, 1, 0, 0, 0},         {2026, 1, 0, 0, 0, 0},  {2026, 4, 31, 0, 0, 0}, {2026, 257, 1, 0, 0, 0},
      {2026, 1, 257, 0, 0, 0},       {0, 1, 1, 0, 0, 0},     {-4, 1, 1, 0, 0, 0},    {10000, 1, 1, 0, 0, 0},
      {2026 + 65536, 1, 1, 0, 0, 0}, {2026, 1, 1, 24, 0, 0}, {2026, 1, 1, -1, 0, 0}, {2026, 1, 1, 0, 60, 0},
      {2026, 1, 1, 0, -1, 0},        {2026, 1, 1, 0, 0, 60}, {2026, 1, 1, 0, 0, -1}};
  for (const Row& row : kRows) {
    EXPECT_FALSE(Date::TryCivil(row.year, row.month, row.day, row.hour, row.minute, row.second))
        << row.year << "-" << row.month << "-" << row.day << " " << row.hour << ":" << row.minute << ":"
        << row.second;
    EXPECT_EQ(
        test::ErrorNumberOf([&] {
          static_cast<void>(Date::Civil(row.year, row.month, row.day, row.hour, row.minute, row.second));
        }),
        5);
  }
}

TEST(Date, TellsItsParts) {
  const Date date = Date::Civil(2026, 3, 15, 14, 30, 5);
  EXPECT_EQ(date.Year(), 2026);
  EXPECT_EQ(date.Month(), 3U);
  EXPECT_EQ(date.Day(), 15U);
  EXPECT_EQ(date.Hour(), 14);
  EXPECT_EQ(date.Minute(), 30);
  EXPECT_EQ(date.Second(), 5);
  EXPECT_EQ(date.DayOnly(), Date::Civil(2026, 3, 15));
  EXPECT_EQ(Date::Civil(2026, 3, 15).DayOnly(), Date::Civil(2026, 3, 15));

  const Date before_the_epoch = Date::Civil(1969, 12, 31, 23, 59, 58);
  EXPECT_EQ(before_the_epoch.Seconds(), -2);
  EXPECT_EQ(before_the_epoch.Day(), 31U);
  EXPECT_EQ(before_the_epoch.Hour(), 23);
  EXPECT_EQ(before_the_epoch.Second(), 58);
  EXPECT_EQ(before_the_epoch.DayOnly(), Date::Civil(1969, 12, 31));
}

TEST(Date, ComparesByMoment) {
  EXPECT_LT(Date::Civil(2026, 3, 15), Date::Civil(2026, 3, 15, 0, 0, 1));
  EXPECT_LT(Date::Civil(2025, 12, 31, 23, 59, 59), Date::Civil(2026, 1, 1));
  EXPECT_EQ(Date::Civil(2026, 1, 1), Date::Civil(2026, 1, 1, 0, 0, 0));
  EXPECT_LT(Date(), Date::Civil(1899, 12, 31));
}

TEST(Date, StartsAtTheDayZero) {
  EXPECT_EQ(Date(), Date::Civil(1899, 12, 30));
  EXPECT_EQ(Date().ToText(), "00:00:00");
}

TEST(Date, WritesItsTexts) {
  struct Row {
    Date date;
    std::string text, time, iso;
  };
  const Row rows[] = {
      {Date::Civil(2026, 3, 15), "3/15/2026", "00:00:00", "2026-03-15T00:00:00"},
      {Date::Civil(2026, 3, 15, 14, 30, 5), "3/15/2026 14:30:05", "14:30:05", "2026-03-15T14:30:05"},
      {Date::Civil(2026, 12, 1, 0, 0, 1), "12/1/2026 00:00:01", "00:00:01", "2026-12-01T00:00:01"},
      {Date::Civil(1899, 12, 30, 9, 7, 3), "09:07:03", "09:07:03", "1899-12-30T09:07:03"},
      {Date::Civil(1899, 12, 29, 9, 7, 3), "12/29/1899 09:07:03", "09:07:03", "1899-12-29T09:07:03"},
      {Date::Civil(26, 3, 5), "3/5/0026", "00:00:00", "0026-03-05T00:00:00"},
      {Date::Civil(9999, 12, 31, 23, 59, 59), "12/31/9999 23:59:59", "23:59:59", "9999-12-31T23:59:59"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.date.ToText(), row.text);
    EXPECT_EQ(row.date.TimeText(), row.time);
    EXPECT_EQ(row.date.ToIso(), row.iso);
  }
}

TEST(Date, ReadsBackTheTextsThatItWrites) {
  std::mt19937_64 random(11);
  const std::int64_t last = Date::Civil(9999, 12, 31, 23, 59, 59).Seconds();
  std::uniform_int_distribution<std::int64_t> seconds(kFirstDay * kDay, last);
  for (int i = 0; i < 30000; ++i) {
    Date date = Date::FromSeconds(seconds(random));
    if (i % 3 == 0) date = date.DayOnly();
    ASSERT_EQ(Date::FromSeconds(date.Seconds()), date);
    ASSERT_EQ(Date::ParseIso(date.ToIso()), std::optional<Date>(date)) << date.ToIso();
    ASSERT_EQ(Date::Parse(date.ToIso()), std::optional<Date>(date)) << date.ToIso();
    ASSERT_EQ(Date::Parse(date.ToText()), std::optional<Date>(date)) << date.ToText();
    ASSERT_EQ(date.ToIso(), Padded(4, date.Year()) + "-" + Padded(2, date.Month()) + "-" +
                                Padded(2, date.Day()) + "T" + Padded(2, date.Hour()) + ":" +
                                Padded(2, date.Minute()) + ":" + Padded(2, date.Second()));
  }
}

TEST(Date, IsoFormIsExact) {
  EXPECT_EQ(Date::ParseIso("2026-03-15T14:30:05"), std::optional<Date>(Date::Civil(2026, 3, 15, 14, 30, 5)));
  EXPECT_EQ(Date::ParseIso("0001-01-01T00:00:00"), std::optional<Date>(Date::Civil(1, 1, 1)));
  for (const char* text :
       {"", "2026-03-15", "2026-03-15 14:30:05", "2026-03-15t14:30:05", "2026-03-15T14:30",
        "2026-03-15T14:30:05Z", " 2026-03-15T14:30:05", "2026-03-15T14:30:05 ", "2026/03/15T14:30:05",
        "2026-02-30T00:00:00", "2026-13-01T00:00:00", "0000-01-01T00:00:00", "2026-03-15T24:00:00",
        "2026-03-15T23:60:00", "2026-03-15T23:59:60", "2026-3-015T00:00:00", "-026-03-15T00:00:00",
        "2026-03-15T+1:30:05"}) {
    EXPECT_FALSE(Date::ParseIso(text)) << text;
  }
}

}  // namespace
}  // namespace talvex::automation
