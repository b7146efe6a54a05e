// Members of the component's enumerations, as people type them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "apps/cli/session.h"
#include "automation/enumeration.h"

namespace talvex::apps {

// The enumeration that a method takes; the first one, where it takes several. Throws Failure when the class
// does not say.
[[nodiscard]] const automation::EnumerationInfo& EnumerationOf(Session& session, std::string_view class_name,
                                                               std::string_view method);

struct Member {
  std::int32_t number = 0;
  std::string name;  // The number, when the enumeration has no name for it.
};

// A member's name in any case, or any whole number: whether that is one of a member is for the component to
// say. Throws UsageError, "'x' is no `what`; the types are A, B", for any other text.
[[nodiscard]] Member ReadMember(const automation::EnumerationInfo& enumeration, const std::string& text,
                                const std::string& what);

}  // namespace talvex::apps
