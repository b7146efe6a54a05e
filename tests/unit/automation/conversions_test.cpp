#include "automation/conversions.h"

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "automation/decimal.h"
#include "automation/dictionary.h"
#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorOf;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

// What a conversion gives: a value of the target type, or the number of the error that it raises.
struct Raises {
  std::int32_t number;
};
template <class T>
struct Row {
  Variant value;
  std::variant<T, Raises> outcome;
};

template <class T, class Convert>
void ExpectRows(const std::vector<Row<T>>& rows, const Convert& convert) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    T result{};
    const ErrorState error = ErrorOf([&] { result = convert(rows[i].value); });
    if (const auto* raises = std::get_if<Raises>(&rows[i].outcome)) {
      EXPECT_EQ(error.number, raises->number) << "row " << i << ": " << error.description;
      EXPECT_FALSE(error.description.empty()) << "row " << i;
    } else {
      EXPECT_EQ(error.number, 0) << "row " << i << ": " << error.description;
      EXPECT_EQ(result, std::get<T>(rows[i].outcome)) << "row " << i;
    }
  }
}

Variant SomeArray() { return Array({1}); }
Variant SomeObject() { return std::make_shared<Dictionary>(); }
Variant Money(std::int64_t units) { return Currency::FromUnits(units); }

TEST(Conversions, ToText) {
  ExpectRows<std::string>({{Variant(), ""},
                           {kNull, Raises{94}},
                           {true, "True"},
                           {false, "False"},
                           {std::int16_t{-7}, "-7"},
                           {kLeast, "-2147483648"},
                           {1.50, "1.5"},
                           {-0.0, "0"},
                           {1e15, "1E+15"},
                           {Money(123400), "12.34"},
                           {Date::Civil(2026, 3, 15), "3/15/2026"},
                           {Date::Civil(2026, 3, 15, 14, 30, 5), "3/15/2026 14:30:05"},
                           {Date::Civil(1899, 12, 30, 14, 30, 5), "14:30:05"},
                           {" as it is ", " as it is "},
                           {SomeArray(), Raises{13}},
                           {SomeObject(), Raises{13}}},
                          ToText);
}

TEST(Conversions, ToDouble) {
  ExpectRows<double>({{Variant(), 0.0},
                      {kNull, Raises{94}},
                      {true, -1.0},
                      {false, 0.0},
                      {std::int16_t{-7}, -7.0},
                      {kMost, 2147483647.0},
                      {0.1, 0.1},
                      {Money(-1), -0.0001},
                      {Date(), Raises{13}},
                      {" -1,234.5 ", -1234.5},
                      {"", Raises{13}},
                      {"abc", Raises{13}},
                      {"3/15/2026", Raises{13}},
                      {"True", Raises{13}},
                      {SomeArray(), Raises{13}},
                      {SomeObject(), Raises{13}}},
                     ToDouble);
}

TEST(Conversions, ToInt32) {
  ExpectRows<std::int32_t>({{Variant(), 0},
                            {kNull, Raises{94}},
                            {true, -1},
                            {std::int16_t{-32768}, -32768},
                            {kLeast, kLeast},
                            {2.5, 2},
                            {3.5, 4},
                            {-2.5, -2},
                            {2147483647.4, kMost},
                            {2147483647.5, Raises{6}},
                            {2147483648.0, Raises{6}},
                            {-2147483648.5, kLeast},
                            {-2147483648.6, Raises{6}},
                            {1e300, Raises{6}},
                            {HUGE_VAL, Raises{6}},
                            {-HUGE_VAL, Raises{6}},
                            {std::nan(""), Raises{6}},
                            {Money(25000), 2},
                            {Money(35000), 4},
                            {Money(std::numeric_limits<std::int64_t>::max()), Raises{6}},
                            {"1,234.5", 1234},
                            {"2147483648", Raises{6}},
                            {"x", Raises{13}},
                            {Date(), Raises{13}},
                            {SomeObject(), Raises{13}}},
                           ToInt32);
  EXPECT_EQ(RoundToInt32(-0.5), 0);
  EXPECT_EQ(ErrorOf([] { static_cast<void>(RoundToInt32(1e10)); }).number, 6);
}

TEST(Conversions, ToInt16) {
  ExpectRows<std::int16_t>({{Variant(), std::int16_t{0}},
                            {kNull, Raises{94}},
                            {true, std::int16_t{-1}},
                            {std::int16_t{7}, std::int16_t{7}},
                            {32767, std::int16_t{32767}},
                            {32768, Raises{6}},
                            {-32768, std::int16_t{-32768}},
                            {-32769, Raises{6}},
                            {32767.4, std::int16_t{32767}},
                            {32767.5, Raises{6}},
                            {"-32768.5", std::int16_t{-32768}},
                            {"x", Raises{13}},
                            {SomeArray(), Raises{13}}},
                           ToInt16);
}

TEST(Conversions, ToBoolean) {
  ExpectRows<bool>({{Variant(), false},
                    {kNull, Raises{94}},
                    {true, true},
                    {false, false},
                    {std::int16_t{0}, false},
                    {-1, true},
                    {0.1, true},
                    {Money(0), false},
                    {"True", true},
                    {"tRUE", true},
                    {" FALSE ", false},
                    {"0", false},
                    {"0.5", true},
                    {"-1", true},
                    {"", Raises{13}},
                    {"yes", Raises{13}},
                    {Date(), Raises{13}},
                    {SomeObject(), Raises{13}}},
                   ToBoolean);
}

TEST(Conversions, ToCurrency) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
  const auto money = [](std::int64_t units) { return Currency::FromUnits(units); };
  ExpectRows<Currency>({{Variant(), money(0)},
                        {kNull, Raises{94}},
                        {true, money(-10000)},
                        {std::int16_t{7}, money(70000)},
                        {kMost, money(21474836470000)},
                        {0.00015, money(2)},
                        {1e15, Raises{6}},
                        {std::nan(""), Raises{13}},
                        {HUGE_VAL, Raises{13}},
                        {Money(kLargest), money(kLargest)},
                        {" 1,234.5 ", money(12345000)},
                        {"12.34565", money(123456)},
                        {"12.3456500", money(123456)},
                        {"12.34575", money(123458)},
                        {"-12.34565000000000000001", money(-123457)},
                        {"0.00005", money(0)},
                        {"0.000050001", money(1)},
                        {"0.000000000009", money(0)},
                        {"1e-400", money(0)},
                        {"1.5D3", money(15000000)},
                        {"12345e-6", money(123)},
                        {"0e999", money(0)},
                        {"123456789012345.6789", money(1234567890123456789)},
                        {"922337203685477.5807", money(kLargest)},
                        {"922337203685477.58074999", money(kLargest)},
                        {"922337203685477.58075", Raises{6}},
                        {"-922337203685477.5808", money(kSmallest)},
                        {"-922337203685477.5809", Raises{6}},
                        {"999999999999999.9999", Raises{6}},
                        {"1e15", Raises{6}},
                        {"1e400", Raises{6}},
                        {"-1e99999999999999999999", Raises{6}},
                        {"1e-99999999999999999999", money(0)},
                        {"", Raises{13}},
                        {"12.3 EUR", Raises{13}},
                        {Date(), Raises{13}},
                        {SomeArray(), Raises{13}}},
                       ToCurrency);
}

TEST(Conversions, CurrencyTextsAreReadBackExactly) {
  std::mt19937_64 random(13);
  for (int i = 0; i < 20000; ++i) {
    const auto units = static_cast<std::int64_t>(random()) >> (i % 64);
    const Currency amount = Currency::FromUnits(units);
    ASSERT_EQ(ToCurrency(amount.ToText()), amount);
    ASSERT_EQ(ToCurrency(amount.ToFixedText()), amount);
  }
}

TEST(Conversions, ToDate) {
  ExpectRows<Date>({{Variant(), Date()},
                    {kNull, Raises{94}},
                    {Date::Civil(2026, 3, 15, 1, 2, 3), Date::Civil(2026, 3, 15, 1, 2, 3)},
                    {" 3/15/2026 ", Date::Civil(2026, 3, 15)},
                    {"2026-03-15T14:30:05", Date::Civil(2026, 3, 15, 14, 30, 5)},
                    {"2/30/2026", Raises{13}},
                    {"", Raises{13}},
                    {"46096", Raises{13}},
                    {46096, Raises{13}},
                    {46096.0, Raises{13}},
                    {true, Raises{13}},
                    {Money(0), Raises{13}},
                    {SomeArray(), Raises{13}},
                    {SomeObject(), Raises{13}}},
                   ToDate);
}

TEST(Conversions, IsNumericAndIsDate) {
  struct Answer {
    Variant value;
    bool numeric, date;
  };
  const Answer rows[] = {{Variant(), true, false},
                         {kNull, false, false},
                         {true, true, false},
                         {std::int16_t{1}, true, false},
                         {1, true, false},
                         {1.5, true, false},
                         {std::nan(""), false, false},
                         {HUGE_VAL, false, false},
                         {-HUGE_VAL, false, false},
                         {Money(1), true, false},
                         {Date(), false, true},
                         {"1", true, false},
                         {"", false, false},
                         {"nan", false, false},
                         {"inf", false, false},
                         {"1E400", false, false},
                         {"3/15/2026", false, true},
                         {"2/30/2026", false, false},
                         {SomeArray(), false, false},
                         {SomeObject(), false, false}};
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(IsNumeric(rows[i].value), rows[i].numeric) << "row " << i;
    EXPECT_EQ(IsDate(rows[i].value), rows[i].date) << "row " << i;
  }
}

TEST(ParseNumber, ReadsEveryFormOfANumber) {
  const std::pair<std::string, double> rows[] = {{"0", 0},
                                                 {"7", 7},
                                                 {"  7  ", 7},
                                                 {"+7", 7},
                                                 {"-7", -7},
                                                 {"007", 7},
                                                 {"1.5", 1.5},
                                                 {".5", 0.5},
                                                 {"-.5", -0.5},
                                                 {"5.", 5},
                                                 {"0.1", 0.1},
                                                 {"1,234,567.89", 1234567.89},
                                                 {"12,34", 1234},
                                                 {"1e3", 1000},
                                                 {"1E3", 1000},
                                                 {"1E+15", 1e15},
                                                 {"1E-05", 1e-5},
                                                 {"1d3", 1000},
                                                 {"1.5D-3", 0.0015},
                                                 {".5e1", 5},
                                                 {"5.e1", 50},
                                                 {"1.7976931348623157E308", 1.7976931348623157e308},
                                                 {"5e-324", 5e-324},
                                                 {"1e-400", 0},
                                                 {"-1e-99999999999999999999", 0},
                                                 {"0e99999999999999999999", 0},
                                                 {"9007199254740993", 9007199254740992}};
  for (const auto& [text, value] : rows) EXPECT_EQ(ParseNumber(text), std::optional<double>(value)) << text;
}

TEST(ParseNumber, TellsTooSmallFromTooLarge) {
  const std::string zeros(400, '0');
  EXPECT_EQ(ParseNumber("0." + zeros + "1"), std::optional<double>(0));
  EXPECT_EQ(ParseNumber("0." + zeros + "1e500"), std::optional<double>(1e99));
  EXPECT_EQ(ParseNumber("0." + zeros + "1e+50"), std::optional<double>(0));
  EXPECT_EQ(ParseNumber("1" + zeros + "e-400"), std::optional<double>(1));
  EXPECT_EQ(ParseNumber(zeros + "1"), std::optional<double>(1));
  for (const std::string& text : {std::string("1e400"), std::string("-1e400"), std::string("1.8E308"),
                                  std::string("1e99999999999999999999"), "1" + zeros, "1" + zeros + "e-10"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(ParseNumber, RefusesAnyOtherText) {
  for (const char* text : {"",
                           " ",
                           "-",
                           "+",
                           ".",
                           "-.",
                           ",",
                           ",1",
                           "1e",
                           "1e+",
                           "1d-",
                           "e5",
                           ".e5",
                           "--1",
                           "+-1",
                           "- 1",
                           "1 2",
                           "1-",
                           "1.2.3",
                           "1.2,3",
                           "1,234.5,6",
                           "1e5.5",
                           "1e1,0",
                           "0x1F",
                           "1f",
                           "inf",
                           "nan",
                           "NaN",
                           "infinity",
                           "$1",
                           "1%",
                           "(1)",
                           "1\t",
                           "\t1",
                           "1\n",
                           "True",
                           "3/15/2026",
                           "\xC2\xA0"
                           "1",
                           "١"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << "'" << text << "'";
  }
}

TEST(ParseNumber, ReadsBackTheTextsOfNumbers) {
  std::mt19937_64 random(17);
  for (int i = 0; i < 20000; ++i) {
    const double size = std::pow(10.0, std::uniform_real_distribution<double>(-300, 300)(random));
    const double value = std::uniform_real_distribution<double>(-1, 1)(random) * size;
    const std::string text = NumberText(value);
    const auto read = ParseNumber(text);
    ASSERT_TRUE(read) << text;
    ASSERT_EQ(NumberText(*read), text);
    ASSERT_NEAR(*read / value, 1, 1e-14) << text;
  }
}

TEST(Conversions, ErrorsShowTheTextInOneLine) {
  struct Shown {
    Variant value;
    std::string description;
  };
  const std::string long_text = std::string(39, 'x') + "\xC3\xA4" + "tail";
  const Shown rows[] = {
      {"abc", "Type mismatch: 'abc' is not a number"},
      {std::string(40, 'x'), "Type mismatch: '" + std::string(40, 'x') + "' is not a number"},
      {std::string(41, 'x'), "Type mismatch: '" + std::string(40, 'x') + "...' is not a number"},
      {long_text, "Type mismatch: '" + std::string(39, 'x') + "...' is not a number"},
      {SomeArray(), "Type mismatch: a value of kind Array is not a number"},
      {kNull, "Invalid use of Null"},
  };
  for (const Shown& row : rows) {
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(ToDouble(row.value)); }).description, row.description);
  }
  EXPECT_EQ(ErrorOf([] { static_cast<void>(ToDate("x")); }).description, "Type mismatch: 'x' is not a date");
  EXPECT_EQ(ErrorOf([] { static_cast<void>(ToBoolean("x")); }).description,
            "Type mismatch: 'x' is not a Boolean");
  EXPECT_EQ(ErrorOf([] { static_cast<void>(ToText(SomeArray())); }).description,
            "Type mismatch: a value of kind Array is not a text");
}

}  // namespace
}  // namespace talvex::automation
