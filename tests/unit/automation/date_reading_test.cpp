#include <array>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "automation/date.h"
#include "automation/text.h"

namespace talvex::automation {
namespace {

std::optional<Date> March(int hour = 0, int minute = 0, int second = 0) {
  return Date::Civil(2026, 3, 15, hour, minute, second);
}

TEST(DateReading, KnowsEveryFormOfADay) {
  for (const char* text :
       {"3/15/2026",    "03/15/2026",      "3-15-2026",      "03-15-2026",    "2026-03-15",
        "2026/03/15",   "  3/15/2026  ",   "15 March 2026",  "15 march 2026", "15 MAR 2026",
        "15 Mar. 2026", "15  March  2026", "15 March, 2026", "15-Mar-2026",   "15-March-2026",
        "15/Mar/2026",  "March 15, 2026",  "March 15,2026",  "March 15 2026", "mar 15, 2026",
        "Mar. 15, 2026"}) {
    EXPECT_EQ(Date::Parse(text), March()) << text;
  }
  EXPECT_EQ(Date::Parse("1/2/2026"), std::optional<Date>(Date::Civil(2026, 1, 2)));
  EXPECT_EQ(Date::Parse("2026-01-02"), std::optional<Date>(Date::Civil(2026, 1, 2)));
  EXPECT_EQ(Date::Parse("1/1/0001"), std::optional<Date>(Date::Civil(1, 1, 1)));
  EXPECT_EQ(Date::Parse("9999-12-31"), std::optional<Date>(Date::Civil(9999, 12, 31)));
  EXPECT_EQ(Date::Parse("2/29/2024"), std::optional<Date>(Date::Civil(2024, 2, 29)));
  EXPECT_EQ(Date::Parse("2/29/2000"), std::optional<Date>(Date::Civil(2000, 2, 29)));
}

TEST(DateReading, KnowsEveryMonthWholeAndInThreeLetters) {
  constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
  unsigned month = 0;
  for (const std::string name : kMonths) {
    const std::optional<Date> day = Date::Civil(2026, ++month, 9);
    for (const std::string& word :
         {name, name.substr(0, 3), Raised(name), Folded(name), name.substr(0, 3) + "."}) {
      EXPECT_EQ(Date::Parse("9 " + word + " 2026"), day) << word;
      EXPECT_EQ(Date::Parse(word + " 9, 2026"), day) << word;
      EXPECT_EQ(Date::Parse("9-" + word + "-2026"), day) << word;
    }
    if (name.size() > 4) {
      EXPECT_FALSE(Date::Parse("9 " + name.substr(0, 4) + " 2026")) << name;
    }
    EXPECT_FALSE(Date::Parse("9 " + name.substr(0, 2) + " 2026")) << name;
    EXPECT_FALSE(Date::Parse("9 " + name + "x 2026")) << name;
  }
}

TEST(DateReading, KnowsEveryFormOfATimeOfDay) {
  struct Row {
    std::string time;
    int hour, minute, second;
  };
  const Row rows[] = {{"14:30", 14, 30, 0},        {"14:30:05", 14, 30, 5},   {"0:00", 0, 0, 0},
                      {"00:00:00", 0, 0, 0},       {"9:07:03", 9, 7, 3},      {"23:59:59", 23, 59, 59},
                      {"12:00 AM", 0, 0, 0},       {"12:00 PM", 12, 0, 0},    {"12:59:59 am", 0, 59, 59},
                      {"12:30pm", 12, 30, 0},      {"1:05 AM", 1, 5, 0},      {"1:05 PM", 13, 5, 0},
                      {"11:59:59 PM", 23, 59, 59}, {"2:30:05  Pm", 14, 30, 5}};
  for (const Row& row : rows) {
    for (const char* day :
         {"3/15/2026 ", "2026-03-15 ", "2026-03-15T", "15 March 2026 ", "March 15, 2026   "}) {
      EXPECT_EQ(Date::Parse(day + row.time), March(row.hour, row.minute, row.second)) << day << row.time;
    }
  }
}

TEST(DateReading, RefusesTimesThatDoNotExist) {
  for (const char* time : {"24:00",     "24:00:00", "25:00",     "23:60",   "23:59:60",  "13:00 PM",
                           "13:00 AM",  "0:00 AM",  "0:30 PM",   "12 AM",   "12 PM",     "2PM",
                           "14",        "14:",      "14:30:",    ":30",     "014:30",    "14:030",
                           "14:30:005", "14.30",    "14:30 XM",  "14:30 P", "2:30 PM x", "14:30:05.5",
                           "14:30Z",    "-1:30",    "2:30 PM AM"}) {
    EXPECT_FALSE(Date::Parse(std::string("3/15/2026 ") + time)) << time;
    EXPECT_FALSE(Date::Parse(std::string("2026-03-15T") + time)) << time;
  }
}

TEST(DateReading, RefusesDaysThatDoNotExist) {
  for (const char* text :
       {"2/30/2026", "2/29/2026", "2/29/1900", "13/1/2026", "15/3/2026", "0/1/2026", "1/0/2026", "1/32/2026",
        "4/31/2026", "2026-02-30", "2026-13-01", "2026-00-10", "2026-10-00", "30 February 2026",
        "0 March 2026", "March 32, 2026", "1/1/0000", "0000-01-01"}) {
    EXPECT_FALSE(Date::Parse(text)) << text;
  }
}

TEST(DateReading, RefusesWhatIsNoDate) {
  for (const char* text : {"",
                           " ",
                           "today",
                           "3",
                           "3/15",
                           "March",
                           "March 15",
                           "March 2026",
                           "15 March",
                           "2026",
                           "20260315",
                           "14:30:05",
                           "3/15/26",
                           "3/15/026",
                           "26-03-15",
                           "15 March 26",
                           "March 15, 26",
                           "15-Mar-26",
                           "3/15/12026",
                           "12026-03-15",
                           "2026-3-5",
                           "2026-3-05",
                           "2026-03-5",
                           "2026/3/5",
                           "2026-3-15 14:30",
                           "003/15/2026",
                           "3/015/2026",
                           "2026-003-15",
                           "3/15-2026",
                           "3-15/2026",
                           "2026-03/15",
                           "2026/03-15",
                           "15-Mar/2026",
                           "15/Mar-2026",
                           "3.15.2026",
                           "3 15 2026",
                           "3 /15/2026",
                           "3/ 15/2026",
                           "3/15/ 2026",
                           "3/15/2026x",
                           "x3/15/2026",
                           "3/15/2026,",
                           "3//15/2026",
                           "-3/15/2026",
                           "3/15/2026 ,",
                           "3/15/2026T",
                           "2026-03-15T",
                           "3/15/2026\t",
                           "\t3/15/2026",
                           "3/15/2026\n",
                           "+3/15/2026",
                           "015 March 2026",
                           "2026 March 15",
                           "15 Marchh 2026",
                           "15 Marc 2026",
                           "15 m\xC3\xA4r 2026",
                           "15March2026",
                           "March 15,",
                           "March, 15 2026",
                           "1000000000000/1/2026",
                           "1/1/99999999999999999999"}) {
    EXPECT_FALSE(Date::Parse(text)) << "'" << text << "'";
  }
}

}  // namespace
}  // namespace talvex::automation
