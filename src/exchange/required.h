// Objects that a caller must pass.
#pragma once

#include <memory>
#include <string>

#include "automation/error.h"

namespace talvex {

// The object; one that is not set raises 91, naming what is missing.
template <class C>
C& Required(const std::shared_ptr<C>& object, const std::string& what) {
  if (object != nullptr) return *object;
  throw automation::Error(automation::error_number::kObjectNotSet, "Talvex", "Object not set: " + what);
}

}  // namespace talvex
