// The suite's currencies and their exchange rates.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "adapters/suite/installation.h"
#include "adapters/suite/suite_database.h"
#include "automation/class_info.h"
#include "automation/dictionary.h"

namespace talvex::adapters::suite {

// Reads the tables CURRENCY and EXCHANGERATE, on a connection of its own for every call; inside a transaction
// it sees what the transaction wrote.
class CurrencyService final : public automation::Object {
  TALVEX_CLASS(CurrencyService, "Mirelo.Currency",
               "Conversion between currencies, and which currencies there are.");

 public:
  explicit CurrencyService(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  TALVEX_METHOD(
      automation::Currency, Convert,
      (const std::string& source, const std::string& target, automation::Currency amount,
       automation::Date date),
      "The amount in the target currency, at the newest rates that are valid on the date's calendar day, "
      "rounded half to even to four decimals. The same currency gives the amount itself. A currency without "
      "a rate on that day, the base currency included, raises 5; a result out of range raises 6.");
  TALVEX_METHOD(std::int32_t, Decimals, (const std::string& code),
                "The number of decimals of the currency's amounts; a currency that is not known raises 5.");
  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, CurrencyCodes, (),
                "The codes of all currencies, each both key and item, in ascending order.");

 private:
  std::shared_ptr<const Installation> installation_;
};

}  // namespace talvex::adapters::suite
