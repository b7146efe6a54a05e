#include "automation/currency.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorNumberOf;

__extension__ using Wide = __int128;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kScale = 10000;

// numerator / denominator as a whole number, half to even.
Wide HalfToEven(Wide numerator, Wide denominator) {
  Wide floored = numerator / denominator - (numerator % denominator < 0 ? 1 : 0);
  const Wide twice_above = 2 * (numerator - floored * denominator);
  if (twice_above > denominator || (twice_above == denominator && floored % 2 != 0)) ++floored;
  return floored;
}

Wide PowerOfTen(int power) {
  Wide result = 1;
  for (int i = 0; i < power; ++i) result *= 10;
  return result;
}

// The ten-thousandths in the value's first 15 significant digits.
Wide UnitsOfDigits(double value) {
  std::array<char, 40> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.14e", value);
  std::string digits(buffer.data());
  const std::size_t mark = digits.find('e');
  const int power = std::stoi(digits.substr(mark + 1)) - 14 + 4;
  digits.erase(mark);
  digits.erase(digits.find('.'), 1);
  const Wide mantissa = std::stoll(digits);
  if (power >= 0) return mantissa * PowerOfTen(power);
  return power < -20 ? 0 : HalfToEven(mantissa, PowerOfTen(-power));
}

// The ten-thousandths in the binary number that the double is.
Wide UnitsOfBits(double value) {
  int exponent = 0;
  const auto mantissa = static_cast<std::int64_t>(std::ldexp(std::frexp(value, &exponent), 53));
  exponent -= 53;
  const Wide scaled = static_cast<Wide>(mantissa) * kScale;
  return exponent >= 0 ? scaled * (Wide{1} << exponent) : HalfToEven(scaled, Wide{1} << -exponent);
}

// What the value is as an amount; nothing when it does not fit. For values below 1e18 only.
std::optional<std::int64_t> Expected(double value) {
  const Wide units = std::fabs(value) < 1e11 ? UnitsOfDigits(value) : UnitsOfBits(value);
  if (units > kLargest || units < kSmallest) return std::nullopt;
  return static_cast<std::int64_t>(units);
}

void ExpectAsModel(double value) {
  if (const auto expected = Expected(value)) {
    ASSERT_EQ(Currency::FromDouble(value).Units(), *expected) << std::hexfloat << value;
  } else {
    ASSERT_EQ(ErrorNumberOf([&] { static_cast<void>(Currency::FromDouble(value)); }), 6)
        << std::hexfloat << value;
  }
}

TEST(Currency, RoundsDoublesHalfToEven) {
  const std::pair<double, std::int64_t> rows[] = {
      {0, 0},
      {-0.0, 0},
      {1, 10000},
      {-12.34, -123400},
      {0.00005, 0},
      {0.00015, 2},
      {0.00025, 2},
      {-0.00015, -2},
      {1.00005, 10000},
      {1.00015, 10002},
      {2.67565, 26756},
      {2.67575, 26758},
      {0.1 + 0.2, 3000},
      {1e-300, 0},
      {std::nextafter(1e10, 0), 100000000000000},
      {9999999999.99995, 100000000000000},
      {12345678901.23455, 123456789012346},
      {99999999999.99994, 999999999999999},
      {99999999999.9999, 999999999999999},
      {std::nextafter(1e11, 0), 1000000000000000},
      {-std::nextafter(1e11, 0), -1000000000000000},
      {1e11, 1000000000000000},
      {100000000000.125, 1000000000001250},
      {100000000000.0001220703125, 1000000000000001},
      {-123456789012345.671875, -1234567890123456719},
      {900000000000000.5, 9000000000000005000},
  };
  for (const auto& [value, units] : rows)
    EXPECT_EQ(Currency::FromDouble(value).Units(), units) << std::hexfloat << value;
}

TEST(Currency, ReachesExactlyToItsBounds) {
  // Doubles are an eighth apart here; the largest amount lies between .5 and .625.
  EXPECT_EQ(Currency::FromDouble(922337203685477.0).Units(), 9223372036854770000);
  EXPECT_EQ(Currency::FromDouble(922337203685477.125).Units(), 9223372036854771250);
  EXPECT_EQ(Currency::FromDouble(922337203685477.5).Units(), 9223372036854775000);
  EXPECT_EQ(Currency::FromDouble(-922337203685477.5).Units(), -9223372036854775000);
  for (const double beyond : {922337203685477.625, 922337203685478.0, 1e15, 1e300}) {
    EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(Currency::FromDouble(beyond)); }), 6) << beyond;
    EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(Currency::FromDouble(-beyond)); }), 6) << -beyond;
  }
}

TEST(Currency, RefusesWhatIsNoNumber) {
  for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(Currency::FromDouble(value)); }), 13) << value;
  }
}

TEST(Currency, AgreesWithExactArithmetic) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 60000; ++i) {
    const double size = std::pow(10.0, std::uniform_real_distribution<double>(-6, 15.3)(random));
    const double value = std::uniform_real_distribution<double>(-1, 1)(random) * size;
    ExpectAsModel(value);
    ExpectAsModel(std::round(value * 20000) / 20000);  // Halves of the smallest unit.
    if (HasFatalFailure()) return;
  }
}

TEST(Currency, AgreesWithExactArithmeticBesideEveryPowerOfTenAndTwo) {
  for (int power = -6; power <= 15; ++power) {
    for (const double centre :
         {std::pow(10.0, power), std::ldexp(1.0, power * 3), std::ldexp(1.0, power * 3 + 1)}) {
      double below = centre;
      double above = centre;
      for (int step = 0; step < 50; ++step) {
        for (const double value : {below, above, -below, -above}) ExpectAsModel(value);
        below = std::nextafter(below, 0);
        above = std::nextafter(above, HUGE_VAL);
      }
    }
    if (HasFatalFailure()) return;
  }
}

TEST(Currency, ComesBackFromTheDoubleItBecomes) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 30000; ++i) {
    const auto bound = static_cast<std::int64_t>(PowerOfTen(1 + i % 15));
    const Currency amount =
        Currency::FromUnits(std::uniform_int_distribution<std::int64_t>(-bound, bound)(random));
    ASSERT_EQ(Currency::FromDouble(amount.ToDouble()), amount) << amount.ToText();
  }
}

TEST(Currency, WritesItsTexts) {
  struct Row {
    std::int64_t units;
    std::string text, fixed;
  };
  const Row rows[] = {{0, "0", "0.0000"},
                      {70000, "7", "7.0000"},
                      {123400, "12.34", "12.3400"},
                      {-1, "-0.0001", "-0.0001"},
                      {10, "0.001", "0.0010"},
                      {-5000, "-0.5", "-0.5000"},
                      {1000000, "100", "100.0000"},
                      {10000001, "1000.0001", "1000.0001"},
                      {kLargest, "922337203685477.5807", "922337203685477.5807"},
                      {kSmallest, "-922337203685477.5808", "-922337203685477.5808"}};
  for (const Row& row : rows) {
    EXPECT_EQ(Currency::FromUnits(row.units).ToText(), row.text);
    EXPECT_EQ(Currency::FromUnits(row.units).ToFixedText(), row.fixed);
  }
}

TEST(Currency, AddsAndSubtractsExactlyAndOverflowsWithSix) {
  struct Row {
    std::int64_t a, b;
    std::optional<std::int64_t> sum, difference;
  };
  const Row rows[] = {{1, 2, 3, -1},
                      {kLargest, 0, kLargest, kLargest},
                      {kLargest, 1, std::nullopt, kLargest - 1},
                      {kLargest, -1, kLargest - 1, std::nullopt},
                      {kSmallest, 1, kSmallest + 1, std::nullopt},
                      {kSmallest, -1, std::nullopt, kSmallest + 1},
                      {kSmallest, kSmallest, std::nullopt, 0},
                      {0, kSmallest, kSmallest, std::nullopt},
                      {kLargest, kSmallest, -1, std::nullopt}};
  const auto check = [](const auto& operation, std::optional<std::int64_t> expected) {
    std::int64_t units = 0;
    const std::int32_t number = ErrorNumberOf([&] { units = operation().Units(); });
    EXPECT_EQ(number, expected ? 0 : 6);
    EXPECT_EQ(units, expected.value_or(0));
  };
  for (const Row& row : rows) {
    const Currency a = Currency::FromUnits(row.a);
    const Currency b = Currency::FromUnits(row.b);
    check([&] { return a + b; }, row.sum);
    check([&] { return a - b; }, row.difference);
  }
}

TEST(Currency, ComparesByAmount) {
  EXPECT_LT(Currency::FromUnits(-1), Currency());
  EXPECT_EQ(Currency::FromUnits(10000), Currency::FromDouble(1));
  EXPECT_GT(Currency::FromUnits(kLargest), Currency::FromUnits(kSmallest));
}

}  // namespace
}  // namespace talvex::automation
