// `talvex-sheet save`: a workbook with edits made.
#pragma once

#include <nlohmann/json.hpp>

namespace talvex::sheet {

// The answer to a `save` message. Raises Refusal when the base is no workbook or an edit cannot be made, and
// what the library of messages raises for a message of another layout.
[[nodiscard]] nlohmann::json Save(const nlohmann::json& asked);

}  // namespace talvex::sheet
