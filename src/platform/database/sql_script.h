// Scripts of several statements, as installations run them.
#pragma once

#include <string_view>
#include <vector>

namespace talvex::platform::database {

// The statements of a script, each without the ";" that ends it, in their order. A ";" between two "$$",
// where PostgreSQL keeps the text of a function, ends nothing. Raises Fault for a quoted text, a name or a
// comment that has no end.
[[nodiscard]] std::vector<std::string_view> StatementsOf(std::string_view script);

}  // namespace talvex::platform::database
