#include "sheet/load.h"

// clang-format off
#include <dependent.h>
#include <sheet.h>
#include <value.h>
// clang-format on

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "sheet/cell_values.h"
#include "sheet/properties.h"

namespace talvex::sheet {

namespace {

using nlohmann::json;

// A cell with its place as one number, so that sorting need not look at the cells themselves.
struct Placed {
  std::int64_t place;
  const GnmCell* cell;
};

// The sheet's cells in their order, which the library's hash table does not keep.
std::vector<Placed> OrderedCells(const Sheet* sheet, bool only_formulas) {
  std::vector<Placed> cells;
  cells.reserve(sheet_cells_count(sheet));
  sheet_cell_foreach(
      sheet,
      [](gpointer /*key*/, gpointer item, gpointer list) {
        const auto* cell = static_cast<const GnmCell*>(item);
        const std::int64_t place = std::int64_t{cell->pos.row} * GNM_MAX_COLS + cell->pos.col;
        static_cast<std::vector<Placed>*>(list)->push_back({place, cell});
      },
      &cells);
  if (only_formulas) std::erase_if(cells, [](const Placed& one) { return one.cell->base.texpr == nullptr; });
  std::sort(cells.begin(), cells.end(), [](const Placed& a, const Placed& b) { return a.place < b.place; });
  return cells;
}

// Values are those that the file's writer calculated. A formula without one was written by a program that
// does not calculate.
void CalculateMissing(Workbook* book) {
  for (int index = 0; index < workbook_sheet_count(book); ++index) {
    sheet_cell_foreach(
        workbook_sheet_by_index(book, index),
        [](gpointer /*key*/, gpointer item, gpointer /*data*/) {
          auto* cell = static_cast<GnmCell*>(item);
          if (cell->base.texpr != nullptr && VALUE_IS_EMPTY(cell->value)) cell_queue_recalc(cell);
        },
        nullptr);
  }
  workbook_recalc(book);
}

}  // namespace

json ReadSheets(const Workbook* book, bool only_formulas) {
  json::array_t sheets;
  for (int index = 0; index < workbook_sheet_count(book); ++index) {
    const Sheet* sheet = workbook_sheet_by_index(book, index);
    message::CellWriter cells;
    for (const auto& [place, cell] : OrderedCells(sheet, only_formulas)) {
      if (auto read = ReadCell(cell)) cells.Add(std::move(*read));
    }
    sheets.push_back({{"name", ValidText(sheet->name_unquoted)}, {"cells", cells.Take()}});
  }
  return sheets;
}

json Load(const std::string& path) {
  const OpenWorkbook opened(path);
  CalculateMissing(opened.Book());
  return {{"sheets", ReadSheets(opened.Book(), false)}, {"properties", ReadProperties(opened.Book())}};
}

}  // namespace talvex::sheet
