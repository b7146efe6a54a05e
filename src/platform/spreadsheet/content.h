// What a workbook holds, as plain data: what an engine reads and what it is asked to change.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "automation/variant.h"
#include "platform/spreadsheet/cells.h"

namespace talvex::platform::spreadsheet {

// Where a sheet of the .xls format ends.
inline constexpr std::int32_t kLastRow = 65536;
inline constexpr std::int32_t kLastColumn = 256;

// The longest text that a cell of the format holds, in UTF-16 units.
inline constexpr std::size_t kLongestText = 32767;

struct Sheet {
  std::string name;
  Cells cells;
};

// A custom document property. Its value is a String, a Double, a Date or a Boolean: the four types there are.
struct Property {
  std::string name;
  automation::Variant value;
  bool linked = false;  // To the content of a cell.
};

struct Content {
  std::vector<Sheet> sheets;  // In the workbook's order.
  std::vector<Property> properties;
};

// The changes that an engine can make. Sheets go by their names as they are at that point of the list.
namespace edit {

// Empty cells are cleared; a cell with a formula gets that and its value is calculated. Formats stay; a date
// gets one where the cell has none.
struct SetCells {
  std::string sheet;
  Cells cells;
};
// At the end.
struct AddSheet {
  std::string name;
};
struct RenameSheet {
  std::string sheet;
  std::string name;
};
// Before the row; what stands there and below moves down, formulas and merged cells with it.
struct InsertRows {
  std::string sheet;
  std::int32_t row;
  std::int32_t count;
};
// Copies `count` rows from `row` on over those from `target` on: formats, heights and merged cells, and the
// contents too unless only the styles are wanted.
struct CopyRows {
  std::string sheet;
  std::int32_t row;
  std::int32_t count;
  std::int32_t target;
  bool only_styles;
};
// Adds the property or replaces the one of that name in any case; it is linked to nothing.
struct SetProperty {
  std::string name;
  automation::Variant value;
};

}  // namespace edit

using Edit = std::variant<edit::SetCells, edit::AddSheet, edit::RenameSheet, edit::InsertRows, edit::CopyRows,
                          edit::SetProperty>;

}  // namespace talvex::platform::spreadsheet
