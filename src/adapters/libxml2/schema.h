// Validating a document against the schema that it names itself.
#pragma once

#include <string>

#include "adapters/libxml2/ownership.h"
#include "platform/xml/tree.h"

namespace talvex::adapters::libxml2 {

// Validates a document whose root has the attribute xsi:noNamespaceSchemaLocation. The location is the path
// of a file, put behind `folder` when it is relative; "\" and "/" both separate, and blanks inside it are
// part of it. The file must be a whole schema: one that includes or imports another is refused, as is a
// location that is an address ("scheme://..."). Anything wrong, a missing file included, is the error;
// code 0 when the document is valid or names no schema.
[[nodiscard]] platform::xml::ParseError Validated(xmlDoc& document, const std::string& folder);

}  // namespace talvex::adapters::libxml2
