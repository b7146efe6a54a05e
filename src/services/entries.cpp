#include "services/entries.h"

#include <utility>

#include "services/lib_error_handling.h"
#include "services/lib_general.h"
#include "services/localised_texts.h"

namespace talvex {

std::string EntryText(const std::optional<std::string>& user, const std::string& label) {
  try {
    std::string text = user ? Lib_General::Gen_GetI18N(*user, label) : Lib_General::LookUpForNobody(label);
    return text.empty() ? label : text;
  } catch (...) {
    return label;
  }
}

void LogCause(automation::ErrorState cause, std::string_view method) {
  const automation::PendingErrorScope pending(std::move(cause));
  std::int32_t level = 0;
  try {
    Lib_ErrorHandling::Err_Log(level, method, std::nullopt);
  } catch (...) {
    // A log that fails must not turn a collected failure into a raised one.
    return;
  }
}

}  // namespace talvex
