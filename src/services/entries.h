// Entries of an error text: what is wrong with data is collected line by line instead of being raised.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "automation/error.h"

namespace talvex {

// The text of a label in the user's language or, where there is none to be had (an unknown user, a label
// without a text), the label itself: an entry must not be lost for want of its text. Where nobody says whose
// language it is to be, it is English, and no user is asked for. Raises nothing; why a lookup failed stands
// in the log.
[[nodiscard]] std::string EntryText(const std::optional<std::string>& user, const std::string& label);

// Writes the cause of an entry to the log under the method's name: the entry says what happened, but not why.
// Raises nothing.
void LogCause(automation::ErrorState cause, std::string_view method);

}  // namespace talvex
