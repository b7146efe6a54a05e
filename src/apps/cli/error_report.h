// What went wrong, for people.
#pragma once

#include <string>
#include <string_view>

#include "automation/error.h"

namespace talvex::apps {

// "talvex: " and the message, on one line.
[[nodiscard]] std::string ErrorLine(std::string_view message);

// The line for an error: what the place where it began says, and its number. When its description is the
// component's chain of calls, the whole chain follows, the outermost call first, each call further in than
// the one that made it.
[[nodiscard]] std::string ErrorReport(const automation::ErrorState& error);

}  // namespace talvex::apps
