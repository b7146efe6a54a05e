#include "adapters/suite/currency_service.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/suite.h"
#include "unit/adapters/suite_database_world.h"

namespace talvex::adapters::suite {
namespace {

using automation::Currency;
using automation::Date;
using suite_test::ErrorOf;
namespace number = automation::error_number;

constexpr std::string_view kCurrencyRows = R"(
INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('USD', 2), ('EUR', 2), ('JPY', 0),
  ('ODD', NULL), ('O''X', 3);
INSERT INTO EXCHANGERATE (CURRENCYCODE, VALIDFROM, RATE) VALUES
  ('EUR', '2025-01-01T00:00:00', 1),
  ('USD', '2025-01-01T00:00:00', 0.92),
  ('USD', '2026-07-01T00:00:00', 0.88),
  ('JPY', '2026-01-01T00:00:00', 0.0062),
  ('JPY', '2026-06-01T00:00:00', NULL),
  ('O''X', '2025-01-01T00:00:00', 4);
)";
const Date kMarch = Date::Civil(2026, 3, 15);
const Date kJuly = Date::Civil(2026, 7, 1);

class SuiteCurrencyService : public testing::Test {
 protected:
  [[nodiscard]] Currency Convert(std::string_view source, std::string_view target, std::int64_t units,
                                 Date date) const {
    return service_.Convert(source, target, Currency::FromUnits(units), date);
  }
  [[nodiscard]] automation::ErrorState ErrorFor(std::string_view source, std::string_view target,
                                                Date date) const {
    return ErrorOf([&] { static_cast<void>(Convert(source, target, 10000, date)); });
  }

  suite_test::DatabaseWorld world_{kCurrencyRows};
  platform::suite::CurrencyConverter service_{world_.classes->Create(platform::suite::class_name::kCurrency)};
};

TEST_F(SuiteCurrencyService, ConvertsThroughTheBaseCurrency) {
  EXPECT_EQ(Convert("USD", "EUR", 1000000, kMarch), Currency::FromUnits(920000));
  EXPECT_EQ(Convert("EUR", "USD", 1000000, kMarch), Currency::FromUnits(1086957));
  EXPECT_EQ(Convert("USD", "JPY", 1000000, kMarch), Currency::FromUnits(148387097));
  EXPECT_EQ(Convert("USD", "EUR", -1000000, kMarch), Currency::FromUnits(-920000));
}

TEST_F(SuiteCurrencyService, TakesTheNewestRateThatIsValidOnTheDay) {
  EXPECT_EQ(Convert("USD", "EUR", 10000, Date::Civil(2026, 6, 30, 23, 59, 59)), Currency::FromUnits(9200));
  EXPECT_EQ(Convert("USD", "EUR", 10000, kJuly), Currency::FromUnits(8800));
  EXPECT_EQ(Convert("USD", "EUR", 10000, Date::Civil(2026, 7, 1, 8, 30, 0)), Currency::FromUnits(8800));
  EXPECT_EQ(Convert("USD", "EUR", 10000, Date::Civil(2025, 1, 1)), Currency::FromUnits(9200));
}

TEST_F(SuiteCurrencyService, TheSameCurrencyGivesTheAmountWithoutReading) {
  const auto before = world_.traffic->statements.size();
  EXPECT_EQ(Convert("USD", "usd", 123456789012345678, kMarch), Currency::FromUnits(123456789012345678));
  EXPECT_EQ(Convert("CHF", "CHF", 1, kMarch), Currency::FromUnits(1));
  EXPECT_EQ(world_.traffic->statements.size(), before);
  EXPECT_EQ(world_.traffic->opened, 0);
}

TEST_F(SuiteCurrencyService, ReadsOneRowForEachRateOnOneSession) {
  for (int i = 0; i < 3; ++i) static_cast<void>(Convert("USD", "EUR", 10000, kMarch));
  EXPECT_EQ(world_.traffic->opened, 1);
  ASSERT_EQ(world_.traffic->statements.size(), 6U);
  const std::pair<std::string, std::size_t> expected(
      "SELECT RATE FROM EXCHANGERATE WHERE CURRENCYCODE='USD' AND VALIDFROM<='2026-03-15T00:00:00' "
      "ORDER BY VALIDFROM DESC",
      1);
  EXPECT_EQ(world_.traffic->statements[0], expected);
}

TEST_F(SuiteCurrencyService, CodesCompareWithoutCaseAndMayHoldQuotes) {
  EXPECT_EQ(Convert("usd", "Eur", 10000, kMarch), Currency::FromUnits(9200));
  EXPECT_EQ(Convert("o'x", "EUR", 10000, kMarch), Currency::FromUnits(40000));
  EXPECT_EQ(service_.Decimals("o'x"), 3);
}

TEST_F(SuiteCurrencyService, NeverGuessesARate) {
  EXPECT_EQ(ErrorFor("CHF", "EUR", kMarch).description,
            "The currency 'CHF' has no exchange rate on 3/15/2026");
  EXPECT_EQ(ErrorFor("EUR", "CHF", kMarch).description,
            "The currency 'CHF' has no exchange rate on 3/15/2026");
  const auto too_early = ErrorFor("USD", "EUR", Date::Civil(2024, 12, 31, 12, 0, 0));
  EXPECT_EQ(too_early.number, number::kInvalidCall);
  EXPECT_EQ(too_early.description, "The currency 'USD' has no exchange rate on 12/31/2024");
  EXPECT_EQ(ErrorFor("JPY", "EUR", kJuly).description, "The currency 'JPY' has no exchange rate on 7/1/2026");
}

TEST_F(SuiteCurrencyService, AResultOutOfRangeIsAnOverflow) {
  const auto error =
      ErrorOf([&] { static_cast<void>(Convert("USD", "JPY", 9'000'000'000'000'000'000, kMarch)); });
  EXPECT_EQ(error.number, number::kOverflow);
}

TEST_F(SuiteCurrencyService, KnowsTheDecimals) {
  EXPECT_EQ(service_.Decimals("USD"), 2);
  EXPECT_EQ(service_.Decimals("jpy"), 0);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(service_.Decimals("CHF")); }).description,
            "The currency 'CHF' is unknown");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(service_.Decimals("ODD")); }).description,
            "The currency 'ODD' has no number of decimals");
}

TEST_F(SuiteCurrencyService, ListsTheCodesInOrder) {
  CurrencyService service(world_.installation);
  const auto codes = service.CurrencyCodes();
  std::string text;
  for (const auto& [key, item] : codes->Entries()) {
    EXPECT_EQ(item, automation::Variant(key));
    text += key + " ";
  }
  EXPECT_EQ(text, "EUR JPY O'X ODD USD ");
}

TEST_F(SuiteCurrencyService, SeesWhatTheTransactionWroteAndNothingMoreAfterItsEnd) {
  {
    const automation::TransactionContext transaction(*world_.classes);
    world_.Sql(
        "INSERT INTO EXCHANGERATE (CURRENCYCODE, VALIDFROM, RATE) VALUES ('NEW', '2026-01-01T00:00:00', 2)");
    EXPECT_EQ(Convert("NEW", "EUR", 10000, kMarch), Currency::FromUnits(20000));
  }
  EXPECT_EQ(ErrorFor("NEW", "EUR", kMarch).number, number::kInvalidCall);
}

}  // namespace
}  // namespace talvex::adapters::suite
