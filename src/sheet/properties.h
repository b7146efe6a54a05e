// Custom document properties between the library and the messages.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "adapters/spreadsheet/message/cells.h"
#include "sheet/open_workbook.h"

namespace talvex::sheet {

[[nodiscard]] nlohmann::json ReadProperties(const Workbook* book);

// Adds the property, or replaces the one of that name in any case.
void SetProperty(Workbook* book, const std::string& name, const adapters::spreadsheet::message::Value& value);

}  // namespace talvex::sheet
