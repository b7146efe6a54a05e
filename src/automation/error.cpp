#include "automation/error.h"

#include <new>
#include <utility>

namespace talvex::automation {

ErrorState& PendingError() noexcept {
  thread_local ErrorState pending;
  return pending;
}

PendingErrorScope::PendingErrorScope(ErrorState state)
    : before_(std::exchange(PendingError(), std::move(state))) {}

PendingErrorScope::~PendingErrorScope() { PendingError() = std::move(before_); }

ErrorState CurrentExceptionState() {
  constexpr std::string_view kSource = "Talvex";
  try {
    throw;
  } catch (const Error& error) {
    return error.State();
  } catch (const std::bad_alloc&) {
    return Error(error_number::kOutOfMemory, kSource, "Out of memory").State();
  } catch (const std::exception& unexpected) {
    return Error(error_number::kInternalError, kSource, std::string("Internal error: ") + unexpected.what())
        .State();
  } catch (...) {
    return Error(error_number::kInternalError, kSource, "Internal error").State();
  }
}

}  // namespace talvex::automation
