#include "sheet/load.h"

// clang-format off
#include <dependent.h>
#include <sheet.h>
#include <value.h>
// clang-format on

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

#include "sheet/cell_values.h"
#include "sheet/properties.h"

namespace talvex::sheet {

namespace {

using nlohmann::json;

// The sheet's cells in their order, which the library's hash table does not keep. They are counted by rows
// first, so that only the cells of a row need comparing.
std::vector<const GnmCell*> OrderedCells(const Sheet* sheet, bool only_formulas) {
  std::vector<const GnmCell*> found;
  found.reserve(sheet_cells_count(sheet));
  sheet_cell_foreach(
      sheet,
      [](gpointer /*key*/, gpointer cell, gpointer list) {
        static_cast<std::vector<const GnmCell*>*>(list)->push_back(static_cast<const GnmCell*>(cell));
      },
      &found);
  if (only_formulas) std::erase_if(found, [](const GnmCell* cell) { return cell->base.texpr == nullptr; });
  const auto row_of = [](const GnmCell* cell) { return static_cast<std::size_t>(cell->pos.row); };
  std::size_t rows = 0;
  for (const GnmCell* cell : found) rows = std::max(rows, row_of(cell) + 1);
  std::vector<std::size_t> next(rows + 1);  // Where the next cell of a row goes.
  for (const GnmCell* cell : found) ++next[row_of(cell) + 1];
  std::partial_sum(next.begin(), next.end(), next.begin());
  std::vector<const GnmCell*> cells(found.size());
  for (const GnmCell* cell : found) cells[next[row_of(cell)]++] = cell;
  const auto by_column = [](const GnmCell* a, const GnmCell* b) { return a->pos.col < b->pos.col; };
  for (std::size_t row = 0, start = 0; row < rows; start = next[row++]) {
    std::sort(cells.begin() + static_cast<std::ptrdiff_t>(start),
              cells.begin() + static_cast<std::ptrdiff_t>(next[row]), by_column);
  }
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
    for (const GnmCell* cell : OrderedCells(sheet, only_formulas)) {
      if (const auto read = ReadCell(cell)) cells.Add(*read);
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
