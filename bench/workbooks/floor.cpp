// The same work as through.cpp, by the workbook library in its own process: what the work itself costs.
//
//   talvex_workbook_floor read FILE                   reads the workbook and looks at every cell
//   talvex_workbook_floor write TEMPLATE TARGET ROWS  fills rows of 10 cells and writes the workbook

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "workbooks/library.h"
#include "workbooks/work.h"

namespace {

using namespace talvex::bench;

struct Sum {
  std::size_t numbers = 0;
  std::size_t letters = 0;
};

Sum LookAtCells(Workbook* book) {
  Sum sum;
  for (int index = 0; index < workbook_sheet_count(book); ++index) {
    sheet_cell_foreach(
        workbook_sheet_by_index(book, index),
        [](gpointer /*key*/, gpointer item, gpointer result) {
          const GnmValue* value = static_cast<const GnmCell*>(item)->value;
          auto* total = static_cast<Sum*>(result);
          if (VALUE_IS_FLOAT(value)) ++total->numbers;
          if (VALUE_IS_STRING(value)) total->letters += std::strlen(value_peek_string(value));
        },
        &sum);
  }
  return sum;
}

void Fill(Sheet* sheet, int rows) {
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < kColumns; ++column) {
      GnmValue* value = IsText(column) ? value_new_string(TextOf(row, column).c_str())
                                       : value_new_float(NumberOf(row, column));
      gnm_cell_set_value(sheet_cell_fetch(sheet, column, row + 1), value);
    }
  }
}

}  // namespace

int main(int count, char** words) {
  if (count != 3 && count != 5) return 2;
  GOIOContext* io = StartLibrary();
  WorkbookView* view = OpenBook(words[2], io);
  if (view == nullptr) return 1;
  Workbook* book = wb_view_get_workbook(view);
  if (count == 3) {
    const Sum sum = LookAtCells(book);
    std::printf("%zu %zu\n", sum.numbers, sum.letters);
  } else {
    Fill(workbook_sheet_by_index(book, 0), std::atoi(words[4]));
    workbook_recalc_all(book);
    WriteBook(view, words[3], io);
  }
  std::fflush(stdout);
  std::_Exit(0);
}
