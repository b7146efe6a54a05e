// The arguments of `talvex call`, from the texts that were typed.
#pragma once

#include <string>
#include <vector>

#include "apps/rpc/json.h"
#include "automation/class_info.h"

namespace talvex::apps {

// Each text "name=value", the value read as the type of that parameter wants it: a number, a date, true or
// false, a member of an enumeration, or the text itself. "null" is Null, "empty" Empty. A variant takes any
// JSON value of the gateway and takes everything else as text; an array or an object takes JSON only. The
// result is {"name": value of the gateway}. Throws UsageError for what cannot be read, an unknown name, and a
// name that comes twice.
[[nodiscard]] rpc::Json ReadArguments(const automation::Method& method,
                                      const std::vector<std::string>& texts);

}  // namespace talvex::apps
