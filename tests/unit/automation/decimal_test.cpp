#include "automation/decimal.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "automation/text.h"
#include "support/error_of.h"

namespace talvex::automation {
namespace {

constexpr int kSamples = 60000;

std::string Printed(const char* form, int precision, double value) {
  std::array<char, 400> buffer{};
  std::snprintf(buffer.data(), buffer.size(), form, precision, value);
  return buffer.data();
}

std::int64_t PowerOfTen(int power) {
  std::int64_t result = 1;
  for (int i = 0; i < power; ++i) result *= 10;
  return result;
}

// The whole number mantissa / 10^dropped, half to even, in integers alone.
std::int64_t HalfToEven(std::int64_t mantissa, int dropped) {
  if (dropped > 17) return 0;
  const std::int64_t unit = PowerOfTen(dropped);
  std::int64_t floored = mantissa / unit - (mantissa % unit < 0 ? 1 : 0);
  const std::int64_t twice_above = 2 * (mantissa - floored * unit);
  if (twice_above > unit || (twice_above == unit && floored % 2 != 0)) ++floored;
  return floored;
}

// The double nearest to mantissa / 10^scale, read from its text.
double NearestDouble(std::int64_t mantissa, int scale) {
  return std::strtod((std::to_string(mantissa) + "e-" + std::to_string(scale)).c_str(), nullptr);
}

// A number of any size that amounts, rates and percentages have, with all the digits a double can have.
double AnyDouble(std::mt19937_64& random) {
  const double size = std::pow(10.0, std::uniform_real_distribution<double>(-9, 16)(random));
  const double value = std::uniform_real_distribution<double>(0.1, 1)(random) * size;
  return random() % 2 == 0 ? value : -value;
}

TEST(Round, RoundsTheDecimalValueHalfToEven) {
  struct Row {
    double value;
    int places;
    double result;
  };
  constexpr Row kRows[] = {
      {1.015, 2, 1.02},
      {1.005, 2, 1.0},
      {1.025, 2, 1.02},
      {1.035, 2, 1.04},
      {2.675, 2, 2.68},
      {-1.015, 2, -1.02},
      {-1.025, 2, -1.02},
      {0.125, 2, 0.12},
      {0.375, 2, 0.38},
      {-0.125, 2, -0.12},
      {0.5, 0, 0},
      {1.5, 0, 2},
      {2.5, 0, 2},
      {3.5, 0, 4},
      {-0.5, 0, 0},
      {-1.5, 0, -2},
      {-2.5, 0, -2},
      {2.5000001, 0, 3},
      {2.4999999, 0, 2},
      {9.5, 0, 10},
      {99.995, 2, 100},
      {0.00005, 4, 0},
      {0.00015, 4, 0.0002},
      {0.25005, 4, 0.25},
      {12.3456, 2, 12.35},
      {0.1 + 0.2, 1, 0.3},
      {0.1 + 0.2, 15, 0.3},        // What lies beyond 15 digits is not there.
      {1.1 + 2.2, 17, 1.1 + 2.2},  // Asked for more decimals than that, the double keeps its own.
      {7, 2, 7},
      {1e300, 2, 1e300},
      {1e-300, 4, 0},
      {-1e-300, 22, 0},
      {5e-324, 22, 0},
      {0.1, 23, 0.1},
  };
  for (const Row& row : kRows)
    EXPECT_EQ(Round(row.value, row.places), row.result) << row.value << " to " << row.places;
}

TEST(Round, LargeNumbersKeepNoMoreDecimalsThanAskedFor) {
  struct Row {
    double value;
    int places;
    double result;
  };
  constexpr Row kRows[] = {
      {12345678901.235, 2, 12345678901.24},        {12345678901.225, 2, 12345678901.22},
      {999999999999.995, 2, 1000000000000},        {1234567890123.456, 2, 1234567890123.46},
      {-1234567890123.456, 2, -1234567890123.46},  {12345678901234.567, 2, 12345678901234.57},
      {12345678901234.56, 2, 12345678901234.56},   {123456789012345.5, 0, 123456789012346},
      {123456789012344.5, 0, 123456789012344},     {1234567890123456.5, 0, 1234567890123456},
      {-1234567890123457.5, 0, -1234567890123458}, {1234567890123456.5, 1, 1234567890123456.5},
      {4503599627370495.5, 0, 4503599627370496},
  };
  for (const Row& row : kRows)
    EXPECT_EQ(Round(row.value, row.places), row.result) << row.value << " to " << row.places;
}

TEST(Round, AgreesWithIntegerArithmeticOnDecimalTexts) {
  std::mt19937_64 random(20260105);
  for (int i = 0; i < kSamples; ++i) {
    const int scale = static_cast<int>(random() % 11);
    const int places = static_cast<int>(random() % 9);
    auto mantissa = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(PowerOfTen(1 + i % 15)));
    if (scale > places && i % 3 == 0) {  // Ties are what rounding is about, and chance seldom makes one.
      const std::int64_t unit = PowerOfTen(scale - places);
      mantissa = mantissa / unit * unit + unit / 2;
    }
    if (random() % 2 == 0) mantissa = -mantissa;
    if (std::llabs(mantissa) >= PowerOfTen(15)) continue;
    const double expected = scale > places ? NearestDouble(HalfToEven(mantissa, scale - places), places)
                                           : NearestDouble(mantissa, scale);
    ASSERT_EQ(Round(NearestDouble(mantissa, scale), places), expected)
        << mantissa << "e-" << scale << " to " << places;
  }
}

TEST(Round, AgreesWithTheDigitsThatTheLibraryPrints) {
  std::mt19937_64 random(7);
  for (int i = 0; i < kSamples; ++i) {
    const double value = AnyDouble(random);
    const int places = static_cast<int>(random() % 7);
    const std::string printed = Printed("%.*e", 14, value);
    const std::size_t mark = printed.find('e');
    const std::int64_t mantissa = std::stoll(Replaced(printed.substr(0, mark), ".", ""));
    const int dropped = 14 - std::stoi(printed.substr(mark + 1)) - places;
    const double expected = dropped > 0 ? NearestDouble(HalfToEven(mantissa, dropped), places)
                                        : std::strtod(Printed("%.*f", places, value).c_str(), nullptr);
    ASSERT_EQ(Round(value, places), expected) << printed << " to " << places;
    ASSERT_EQ(Round(expected, places), expected) << printed << " to " << places << ", again";
  }
}

TEST(Round, LeavesWhatIsNotFiniteAndRefusesNegativePlaces) {
  EXPECT_TRUE(std::isnan(Round(std::nan(""), 2)));
  EXPECT_EQ(Round(HUGE_VAL, 2), HUGE_VAL);
  EXPECT_EQ(Round(-HUGE_VAL, 0), -HUGE_VAL);
  EXPECT_EQ(test::ErrorNumberOf([] { static_cast<void>(Round(1.5, -1)); }), 5);
  EXPECT_EQ(test::ErrorNumberOf([] { static_cast<void>(Round(1, -1)); }), 5);
}

TEST(Decimal, HoldsFifteenDigits) {
  struct Row {
    double value;
    bool negative;
    std::uint64_t digits;
    int exponent;
  };
  constexpr Row kRows[] = {
      {1.015, false, 101500000000000, -14},  {-1.015, true, 101500000000000, -14},
      {1, false, 100000000000000, -14},      {0.1, false, 100000000000000, -15},
      {1e15, false, 100000000000000, 1},     {999999999999999.9, false, 100000000000000, 1},
      {1e300, false, 100000000000000, 286},  {2.0 / 3, false, 666666666666667, -15},
      {5e-324, false, 494065645841247, -338}};
  for (const Row& row : kRows) {
    const Decimal decimal = ToDecimal(row.value);
    EXPECT_EQ(decimal.negative, row.negative) << row.value;
    EXPECT_EQ(decimal.digits, row.digits) << row.value;
    EXPECT_EQ(decimal.exponent, row.exponent) << row.value;
  }
  EXPECT_EQ(ToDecimal(0).digits, 0U);
}

TEST(Decimal, DropsDigitsHalfToEven) {
  struct Row {
    std::uint64_t digits;
    int dropped;
    std::uint64_t result;
  };
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  constexpr Row kRows[] = {{0, 1, 0},
                           {4, 1, 0},
                           {5, 1, 0},
                           {6, 1, 1},
                           {14, 1, 1},
                           {15, 1, 2},
                           {25, 1, 2},
                           {250, 2, 2},
                           {251, 2, 3},
                           {350, 2, 4},
                           {50, 2, 0},
                           {51, 2, 1},
                           {kMost, 19, 2},
                           {kMost, 20, 0},
                           {kMost, 400, 0},
                           {kMost, 1, 1844674407370955162},
                           {5000000000000000000, 19, 0},
                           {5000000000000000001, 19, 1}};
  for (const Row& row : kRows) EXPECT_EQ(DropDigits(row.digits, row.dropped), row.result) << row.digits;
}

TEST(NumberText, WritesFifteenSignificantDigits) {
  const std::pair<double, std::string> rows[] = {
      {0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {-1, "-1"},
      {100, "100"},
      {0.1, "0.1"},
      {-0.5, "-0.5"},
      {1.50, "1.5"},
      {0.1 + 0.2, "0.3"},
      {1.0 / 3, "0.333333333333333"},
      {2.0 / 3, "0.666666666666667"},
      {1234567.891, "1234567.891"},
      {123456789012.345, "123456789012.345"},
      {999999999999999, "999999999999999"},
      {999999999999999.9, "1E+15"},
      {1e15, "1E+15"},
      {-1e15, "-1E+15"},
      {1234567890123456, "1.23456789012346E+15"},
      {1e100, "1E+100"},
      {0.0001, "0.0001"},
      {0.00012345, "0.00012345"},
      {0.00001, "1E-05"},
      {-0.000012345, "-1.2345E-05"},
      {1e-100, "1E-100"},
      {5e-324, "4.94065645841247E-324"},
      {std::numeric_limits<double>::max(), "1.79769313486232E+308"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(NumberText(value), text);
}

TEST(NumberText, AgreesWithTheLibraryOverTheNumbersThatPeopleWrite) {
  std::mt19937_64 random(7);
  for (int i = 0; i < kSamples; ++i) {
    const auto digits = static_cast<double>(random() % 10'000'000'000'000'000'000ULL >> (i % 64));
    const double value = digits / std::pow(10, i % 20) * (i % 2 == 0 ? 1 : -1);
    if (value == 0) continue;
    ASSERT_EQ(NumberText(value), Raised(Printed("%.*g", 15, value))) << i;
  }
}

TEST(NumberText, AgreesWithTheLibraryOverAllDoubles) {
  std::mt19937_64 random(42);
  for (int i = 0; i < kSamples; ++i) {
    const double value = i % 2 == 0 ? AnyDouble(random) : std::bit_cast<double>(random());
    if (!std::isfinite(value) || value == 0) continue;
    ASSERT_EQ(NumberText(value), Raised(Printed("%.*g", 15, value)));
  }
}

}  // namespace
}  // namespace talvex::automation
