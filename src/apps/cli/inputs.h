// Amounts and days as they were typed.
#pragma once

#include <string>

#include "apps/cli/session.h"
#include "automation/date.h"

namespace talvex::apps {

// Throws UsageError for what is no finite number.
[[nodiscard]] double AmountOf(const std::string& text);

// The clock's day for the empty text. Throws UsageError for what is no date.
[[nodiscard]] automation::Date DateOf(const std::string& text, Session& session);

}  // namespace talvex::apps
