#include "platform/database/fault.h"

#include "automation/error.h"
#include "automation/transaction_context.h"

namespace talvex::platform::database {

std::int32_t ErrorNumberOf(FaultKind kind) noexcept {
  namespace number = automation::error_number;
  switch (kind) {
    case FaultKind::Duplicate:
    case FaultKind::NullNotAllowed:
    case FaultKind::Constraint:
      return number::kConstraint;
    case FaultKind::ValueRefused:
      return number::kValueTooLongOrWrongType;
    case FaultKind::Conflict:
      return number::kUnspecified;
    case FaultKind::CannotOpen:
      return number::kCannotOpenDatabase;
    default:
      return number::kStatementRefused;
  }
}

void RaiseAsError(const Fault& fault) {
  if (fault.Kind() == FaultKind::Conflict) NoteConflict();
  throw automation::Error(ErrorNumberOf(fault.Kind()), kErrorSource, fault.what());
}

void RefuseToWrite() {
  throw Fault(
      FaultKind::Other, 3906, "25006",
      "A reading transaction takes queries only: do what writes in a transaction that may write, which "
      "TransactionHost::Run opens");
}

void NoteConflict() noexcept {
  if (auto* const context = automation::TransactionContext::Current()) context->NoteConflict();
}

}  // namespace talvex::platform::database
