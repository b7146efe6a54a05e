// What a piece of a test raises.
#pragma once

#include "automation/error.h"

namespace talvex::automation_test {

// The error that `body` raises, with the number 0 when it raises none; any other exception passes through.
template <class Body>
automation::ErrorState ErrorOf(Body&& body) {
  try {
    body();
  } catch (const automation::Error& error) {
    return error.State();
  }
  return {};
}

template <class Body>
std::int32_t ErrorNumberOf(Body&& body) {
  return ErrorOf(body).number;
}

}  // namespace talvex::automation_test
