// Cells between the library and the messages.
#pragma once

#include <optional>
#include <string>

#include "adapters/spreadsheet/message/cells.h"

// gnumeric.h comes first: the library's other headers need it.
#include <gnumeric.h>
// clang-format off
#include <cell.h>
// clang-format on

namespace talvex::sheet {

namespace message = adapters::spreadsheet::message;

// What the cell holds, for the message; nothing for a cell without value and formula.
[[nodiscard]] std::optional<message::Cell> ReadCell(const GnmCell* cell);

// Makes the cell hold that, as an edit of the message says. Raises Refusal for a formula that cannot be read
// and for a date that the workbook cannot hold.
void WriteCell(Sheet* sheet, const message::Cell& cell);

// The text as UTF-8: a damaged file's may be none.
[[nodiscard]] std::string ValidText(const char* text);

}  // namespace talvex::sheet
