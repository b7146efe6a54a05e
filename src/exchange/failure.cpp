#include "exchange/failure.h"

#include "services/entries.h"
#include "services/lib_error_handling.h"

namespace talvex {

Failure::Failure(std::string_view label, std::string_view description)
    : Error(automation::error_number::kInvalidCall, "Talvex.BudgetExcel", description), label_(label) {}

void CollectFailure(const Failure& failure, std::string_view method, const std::optional<std::string>& user,
                    std::string& text) {
  LogCause(failure.State(), method);
  Lib_ErrorHandling::Err_AppendLine(text, EntryText(user, failure.Label()), "");
}

}  // namespace talvex
