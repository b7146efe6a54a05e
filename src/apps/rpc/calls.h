// Late-bound calls with their arguments and results as JSON.
#pragma once

#include <string_view>

#include "apps/rpc/values.h"
#include "automation/object.h"

namespace talvex::apps::rpc {

// Calls a method with arguments by position (an array) or by name (an object; names without regard to case).
// An argument that is not there is left out: a missing one, not Null. Gives {"result": value, "out": {"name":
// value, ..}}, where out holds every by-reference parameter as the method left it, Empty for one that was
// left out; a method without a result gives Empty.
//
// Raises InvalidParams for an unknown name, one given twice, and a malformed value; otherwise what
// Object::Invoke raises.
[[nodiscard]] Json CallMethod(automation::Object& object, std::string_view method, const Json& arguments,
                              ObjectTable& objects);

}  // namespace talvex::apps::rpc
