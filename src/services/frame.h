// The frame around methods and procedures: error handler, transaction vote, log, raise.
//
//   std::int32_t BudgetT::PostToBudget(...) {
//     return Writes("Talvex.BudgetT.PostToBudget", [&] { ... });
//   }
#pragma once

#include <string_view>
#include <type_traits>
#include <utility>

#include "automation/error.h"
#include "services/lib_error_handling.h"
#include "services/lib_mts.h"

namespace talvex {

// Runs `body`; when it fails, runs `on_failure` with the error pending, which closes what the body left open
// and gives the information text, and then logs and raises the error under the method's name (Err_Raise).
template <class Body, class OnFailure>
auto Handled(std::string_view method, Body&& body, OnFailure&& on_failure) -> std::invoke_result_t<Body> {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    const automation::PendingErrorScope pending(automation::CurrentExceptionState());
    const Lib_ErrorHandling::Information information = std::forward<OnFailure>(on_failure)();
    Lib_ErrorHandling::Err_Raise(method, information);
    throw;  // Only for an error without a number, which Err_Raise does not raise again.
  }
}

// For private methods and module procedures: no vote.
template <class Body>
auto Handled(std::string_view method, Body&& body) -> std::invoke_result_t<Body> {
  return Handled(method, std::forward<Body>(body), [] { return Lib_ErrorHandling::Information(); });
}

// For public methods that only read: a failure votes abort all the same, since the caller's work rests on the
// answer.
template <class Body>
auto Reads(std::string_view method, Body&& body) -> std::invoke_result_t<Body> {
  return Handled(method, std::forward<Body>(body), [] {
    Lib_MTS::MTS_SetAbort();
    return Lib_ErrorHandling::Information();
  });
}

// For public methods that change data: success votes complete, failure votes abort.
template <class Body>
auto Writes(std::string_view method, Body&& body) -> std::invoke_result_t<Body> {
  return Reads(method, [&]() -> std::invoke_result_t<Body> {
    if constexpr (std::is_void_v<std::invoke_result_t<Body>>) {
      std::forward<Body>(body)();
      Lib_MTS::MTS_SetComplete();
    } else {
      auto result = std::forward<Body>(body)();
      Lib_MTS::MTS_SetComplete();
      return result;
    }
  });
}

}  // namespace talvex
