#include "adapters/suite/exchange_rate.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "automation/error.h"
#include "unit/adapters/suite_world.h"

namespace talvex::adapters::suite {
namespace {

using automation::Currency;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

struct Case {
  std::int64_t amount;
  double source;
  double target;
  std::int64_t result;
};

TEST(SuiteExchangeRate, GivesTheExactQuotientRoundedOnce) {
  const std::array<Case, 16> cases = {{
      {1000000, 1, 1, 1000000},
      {1000000, 0.92, 1, 920000},
      {1000000, 1, 0.92, 1086957},             // 108.69565..
      {1000000, 1, 0.0062, 161290323},         // 16129.03225..
      {60000000000, 0.0062, 1.19, 312605042},  // 31260.50420..
      {1, 1, 2, 0},                            // Half a unit, to the even one below.
      {3, 1, 2, 2},                            // One and a half, to the even one above.
      {-1, 1, 2, 0},
      {-3, 1, 2, -2},
      {5, 0.1, 1, 0},  // 0.1 is a tenth, not the binary number beside it.
      {15, 0.1, 1, 2},
      {25, 0.1, 1, 2},
      {1234567890123456789, 0.1, 1, 123456789012345679},  // 19 digits, which a double would cut to 16.
      {kLargest, 1.19, 1.19, kLargest},
      {kSmallest, 0.3, 0.3, kSmallest},
      {0, 1e-300, 1e300, 0},
  }};
  for (const Case& c : cases) {
    EXPECT_EQ(Exchanged(Currency::FromUnits(c.amount), c.source, c.target).Units(), c.result)
        << c.amount << " x " << c.source << " / " << c.target;
  }
}

TEST(SuiteExchangeRate, ResultsOutOfRangeAreAnOverflow) {
  const auto number = [](std::int64_t amount, double source, double target) {
    return suite_test::ErrorOf(
               [&] { static_cast<void>(Exchanged(Currency::FromUnits(amount), source, target)); })
        .number;
  };
  EXPECT_EQ(number(kLargest, 1.1, 1), automation::error_number::kOverflow);
  EXPECT_EQ(number(kSmallest, 1.1, 1), automation::error_number::kOverflow);
  EXPECT_EQ(number(1, 1e300, 1e-300), automation::error_number::kOverflow);
  EXPECT_EQ(number(kSmallest, 1, 1), 0);
  EXPECT_EQ(number(kLargest, 1e-300, 1e300), 0);
}

// Whatever happens to be drawn, Python's fractions must say the same.
TEST(SuiteExchangeRate, AgreesWithFractionsOnManyAmounts) {
  std::mt19937_64 random(20261121);  // NOLINT(cert-msc51-cpp): the same cases every time.
  std::string cases;
  for (int i = 0; i < 5000; ++i) {
    const auto units = static_cast<std::int64_t>(random()) >> (random() % 64);
    const auto rate = [&] {
      const double digits = static_cast<double>(random() % 1'000'000'000'000'000) + 1;
      return i % 2 == 0 ? digits / 1e12 : static_cast<double>(random() % 20000 + 1) / 10000;
    };
    const double source = rate();
    const double target = rate();
    std::string result = "overflow";
    try {
      result = std::to_string(Exchanged(Currency::FromUnits(units), source, target).Units());
    } catch (const automation::Error& error) {
      ASSERT_EQ(error.Number(), automation::error_number::kOverflow);
    }
    std::array<char, 200> line{};
    std::snprintf(line.data(), line.size(), "%lld %.17g %.17g %s\n", static_cast<long long>(units), source,
                  target, result.c_str());
    cases += line.data();
  }
  const auto verdict = suite_test::Python(R"(
import fractions, json, sys
wrong, right, overflows = [], 0, 0
for line in open(sys.argv[1]):
    units, source, target, result = line.split()
    decimal = lambda rate: fractions.Fraction("%.14e" % float(rate))
    expected = round(int(units) * decimal(source) / decimal(target))
    if not -2**63 <= expected < 2**63:
        expected = "overflow"
        overflows += 1
    if str(expected) == result: right += 1
    else: wrong.append(line + str(expected))
print(json.dumps({"wrong": wrong, "right": right, "overflows": overflows}))
)",
                                          cases);
  EXPECT_EQ(verdict["wrong"], nlohmann::json::array());
  EXPECT_EQ(verdict["right"], 5000);
  EXPECT_GT(verdict["overflows"], 10);
  EXPECT_LT(verdict["overflows"], 2500);
}

}  // namespace
}  // namespace talvex::adapters::suite
