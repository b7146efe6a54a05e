// What a piece of a test raises.
#pragma once

#include "automation/error.h"

namespace talvex::test {

// The error that `step` raises, with the number 0 when it raises none; any other exception passes through.
template <class Step>
automation::ErrorState ErrorOf(Step&& step) {
  try {
    step();
  } catch (const automation::Error& error) {
    return error.State();
  }
  return {};
}

template <class Step>
std::int32_t ErrorNumberOf(Step&& step) {
  return ErrorOf(step).number;
}

}  // namespace talvex::test
