#include "exchange/failure.h"

#include "services/lib_error_handling.h"
#include "services/lib_general.h"

namespace talvex {

namespace {

// The label itself is better than silence when its text cannot be had.
std::string TextOf(const std::string& label, const std::string& user) {
  try {
    std::string text = Lib_General::Gen_GetI18N(user, label);
    return text.empty() ? label : text;
  } catch (...) {
    return label;
  }
}

// The line says what happened but not why; without the log nobody would know.
void Log(const Failure& failure, std::string_view method) {
  const automation::PendingErrorScope pending(failure.State());
  std::int32_t level = 0;
  try {
    Lib_ErrorHandling::Err_Log(level, method, std::nullopt);
  } catch (...) {
    // A log that fails must not turn a collected failure into a raised one.
    return;
  }
}

}  // namespace

Failure::Failure(std::string_view label, std::string_view description)
    : Error(automation::error_number::kInvalidCall, "Talvex.BudgetExcel", description), label_(label) {}

void CollectFailure(const Failure& failure, std::string_view method, const std::string& user,
                    std::string& text) {
  Log(failure, method);
  Lib_ErrorHandling::Err_AppendLine(text, TextOf(failure.Label(), user), "");
}

}  // namespace talvex
