// References between the ledger's records and those of other components.
#pragma once

#include <cstdint>

#include "platform/suite.h"
#include "services/lib_general.h"

namespace talvex {

// The automation object-error base and 7: a record refers to one that does not exist, or is referred to.
inline constexpr std::int32_t kInvalidReference = -2147221497;

// Created through the caller's transaction, so that it sees what the transaction wrote.
[[nodiscard]] inline platform::suite::ReferentialChecker NewReferentialChecker() {
  return platform::suite::ReferentialChecker(
      Lib_General::gen_getComponent(platform::suite::class_name::kReferentialChecker));
}

}  // namespace talvex
