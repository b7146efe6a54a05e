// Workbooks as the platform knows them, and as messages. For this folder only.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/spreadsheet/engine.h"

namespace talvex::adapters::spreadsheet {

// Raises std::exception for an answer of another layout, or one with texts that are not UTF-8.
[[nodiscard]] platform::spreadsheet::Content ReadContent(const nlohmann::json& answer);
[[nodiscard]] platform::spreadsheet::Rewritten ReadRewritten(nlohmann::json& answer);

[[nodiscard]] nlohmann::json WriteEdits(const std::string& base,
                                        const std::vector<platform::spreadsheet::Edit>& edits);

}  // namespace talvex::adapters::spreadsheet
