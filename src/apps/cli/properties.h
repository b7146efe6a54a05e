// The properties of a requisition line, as they were typed.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "automation/collection.h"

namespace talvex::apps {

// A collection of "NAME=VALUE" properties, after those that options have set; the value null is Null. Throws
// UsageError for a text without "=" and for a name that comes twice.
[[nodiscard]] std::shared_ptr<automation::Collection> PropertiesOf(
    const std::vector<std::string>& values, const std::vector<std::pair<std::string, std::string>>& set);

}  // namespace talvex::apps
