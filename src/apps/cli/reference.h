// What the classes say of themselves, in words.
#pragma once

#include <string>
#include <vector>

#include "automation/class_info.h"
#include "automation/class_registry.h"

namespace talvex::apps {

// "iDate: date", "in/out iDate: date", "Options: int32, optional".
[[nodiscard]] std::string ParameterText(const automation::Parameter& parameter);
// "Count: int32, read-only".
[[nodiscard]] std::string PropertyText(const automation::Property& property);
// "Approved = 1, NotYetApproved = 2".
[[nodiscard]] std::string MembersText(const automation::EnumerationInfo& enumeration);
// The enumerations among the types of a class's parameters, each once, in the order in which they come up.
[[nodiscard]] std::vector<const automation::EnumerationInfo*> EnumerationsOf(
    const automation::ClassInfo& info);

// The reference of all classes, in the order of the alphabet.
[[nodiscard]] std::string ReferenceMarkdown(const automation::ClassRegistry& classes);

}  // namespace talvex::apps
