// What classes say of themselves, as JSON.
#pragma once

#include "apps/rpc/json.h"
#include "automation/class_info.h"
#include "automation/class_registry.h"

namespace talvex::apps::rpc {

// {"classes": [{"class", "documentation"}, ..]}: every class that can be created, in the order of the
// alphabet.
[[nodiscard]] Json DescribeClasses(const automation::ClassRegistry& classes);

// {"class", "documentation", "methods": [{"name", "documentation", "result", "parameters"}, ..],
//  "properties": [{"name", "documentation", "type", "writable"}, ..]}, members in the order of their
//  declaration.
// The result of a method without one is null. A parameter is {"name", "type", "direction": "in" or "in/out",
// "optional"} and, when its type is an enumeration, "enumeration": [{"name", "number"}, ..].
[[nodiscard]] Json DescribeClass(const automation::ClassInfo& info);

}  // namespace talvex::apps::rpc
