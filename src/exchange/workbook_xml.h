// The content of a workbook as XML text.
#pragma once

#include <string>

#include "platform/spreadsheet/workbook.h"

namespace talvex {

// The workbook XML that docs/workbook-markup.md describes. Written as text: building it from nodes takes more
// than twice as long. A text with a character that XML does not have makes it no XML.
[[nodiscard]] std::string WorkbookXml(platform::spreadsheet::Workbook& book);

}  // namespace talvex
