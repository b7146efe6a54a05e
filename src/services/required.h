// Objects that a caller must pass.
#pragma once

#include <memory>
#include <string_view>

#include "automation/error.h"

namespace talvex {

// The object; one that is not set raises 91, naming what is missing.
template <class C>
C& Required(const std::shared_ptr<C>& object, std::string_view what, std::string_view source = "Talvex") {
  if (object != nullptr) return *object;
  throw automation::Error(automation::error_number::kObjectNotSet, source,
                          "Object not set: " + std::string(what));
}

}  // namespace talvex
