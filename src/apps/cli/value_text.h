// Values of the component for people.
#pragma once

#include <string>
#include <string_view>

#include "apps/rpc/json.h"

namespace talvex::apps {

// A value of the gateway after its name, as lines: "name: value", and the items of an array, a dictionary or
// a collection below the name, each on a line of its own, indented.
[[nodiscard]] std::string NamedValueText(std::string_view name, const rpc::Json& value);

}  // namespace talvex::apps
