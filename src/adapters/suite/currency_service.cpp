#include "adapters/suite/currency_service.h"

#include <cmath>

#include "adapters/suite/exchange_rate.h"
#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/literals.h"

namespace talvex::adapters::suite {

namespace {

using automation::Currency;
using automation::Date;
using platform::database::TextLiteral;

[[noreturn]] void RaiseFor(const std::string& code, const std::string& what) {
  throw automation::Error(automation::error_number::kInvalidCall, "Mirelo.Currency",
                          "The currency '" + code + "' " + what);
}

// The first row of the result is all that is read, so the newest rate is not asked for in any one database's
// own words.
double RateOf(SuiteDatabase& database, const std::string& code, Date date) {
  const auto rows = database.Rows("SELECT RATE FROM EXCHANGERATE WHERE CURRENCYCODE=" + TextLiteral(code) +
                                      " AND VALIDFROM<=" + platform::database::DateLiteral(date) +
                                      " ORDER BY VALIDFROM DESC",
                                  1);
  if (rows.RowCount() == 0 || rows.TypeAt(0, 0) == automation::Kind::Null) {
    RaiseFor(code, "has no exchange rate on " + date.DayOnly().ToText());
  }
  const double rate = automation::ToDouble(rows.Value(0, 0));
  if (!std::isfinite(rate) || rate <= 0) {
    RaiseFor(code, "has an exchange rate on " + date.DayOnly().ToText() + " that is not above 0");
  }
  return rate;
}

}  // namespace

Currency CurrencyService::Convert(const std::string& source, const std::string& target, Currency amount,
                                  Date date) {
  if (automation::SameCode(source, target)) return amount;
  SuiteDatabase database(installation_->ConnectionText());
  const double source_rate = RateOf(database, source, date);
  return Exchanged(amount, source_rate, RateOf(database, target, date));
}

std::int32_t CurrencyService::Decimals(const std::string& code) {
  SuiteDatabase database(installation_->ConnectionText());
  const auto rows = database.Rows("SELECT DECIMALS FROM CURRENCY WHERE CURRENCYCODE=" + TextLiteral(code), 1);
  if (rows.RowCount() == 0) RaiseFor(code, "is unknown");
  if (rows.TypeAt(0, 0) == automation::Kind::Null) RaiseFor(code, "has no number of decimals");
  return automation::ToInt32(rows.Value(0, 0));
}

std::shared_ptr<automation::Dictionary> CurrencyService::CurrencyCodes() {
  SuiteDatabase database(installation_->ConnectionText());
  const auto rows = database.Rows("SELECT CURRENCYCODE FROM CURRENCY ORDER BY CURRENCYCODE");
  auto codes = std::make_shared<automation::Dictionary>();
  for (std::size_t row = 0; row < rows.RowCount(); ++row) {
    const std::string code(rows.TextAt(row, 0));
    codes->Add(code, code);
  }
  return codes;
}

}  // namespace talvex::adapters::suite
