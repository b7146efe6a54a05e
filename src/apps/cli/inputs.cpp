#include "apps/cli/inputs.h"

#include <cmath>

#include "apps/cli/layout.h"
#include "automation/conversions.h"

namespace talvex::apps {

double AmountOf(const std::string& text) {
  const auto amount = automation::ParseNumber(text);
  if (!amount || !std::isfinite(*amount))
    throw UsageError("'" + Shortened(text) + "' is no amount: a number is wanted");
  return *amount;
}

automation::Date DateOf(const std::string& text, Session& session) {
  if (text.empty()) return session.Now().DayOnly();
  if (const auto date = automation::Date::Parse(text)) return *date;
  throw UsageError("'" + Shortened(text) + "' is no date: 2026-03-15, for example, is one");
}

}  // namespace talvex::apps
