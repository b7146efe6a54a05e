// `talvex-sheet load`: a workbook as a message.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "sheet/open_workbook.h"

namespace talvex::sheet {

// The answer to `load`. Raises Refusal when the file is no workbook.
[[nodiscard]] nlohmann::json Load(const std::string& path);

// The workbook's sheets with their cells; only those with a formula when `only_formulas`.
[[nodiscard]] nlohmann::json ReadSheets(const Workbook* book, bool only_formulas);

}  // namespace talvex::sheet
