// The same work as through.cpp, by the workbook library in its own process: what the work itself costs.
//
//   talvex_workbook_floor read FILE                   reads the workbook and looks at every cell
//   talvex_workbook_floor write TEMPLATE TARGET ROWS  fills rows of 10 cells and writes the workbook

// gnumeric.h comes first: the library's other headers need it.
#include <gnumeric.h>
// clang-format off
#include <cell.h>
#include <command-context-stderr.h>
#include <gnm-plugin.h>
#include <gutils.h>
#include <libgnumeric.h>
#include <sheet.h>
#include <value.h>
#include <workbook-view.h>
#include <workbook.h>
#include <goffice/app/file.h>
#include <goffice/app/go-plugin.h>
#include <goffice/app/io-context.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-output-memory.h>
// clang-format on

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "workbooks/work.h"

namespace {

using namespace talvex::bench;

GOIOContext* Start() {
  const char* words[] = {"floor", nullptr};
  gnm_pre_parse_init(1, words);
  gnm_init();
  GOCmdContext* context = gnm_cmd_context_stderr_new();
  GSList* folders = g_slist_append(nullptr, g_build_filename(gnm_sys_lib_dir(), PLUGIN_SUBDIR, nullptr));
  go_plugins_init(context, nullptr, nullptr, folders, FALSE, GNM_PLUGIN_LOADER_MODULE_TYPE);
  for (const char* id : {"Gnumeric_Excel", "Gnumeric_fnmath", "Gnumeric_fnlogical", "Gnumeric_fnstat"}) {
    GOErrorInfo* error = nullptr;
    go_plugin_activate(go_plugins_get_plugin_by_id(id), &error);
  }
  return go_io_context_new(context);
}

WorkbookView* Open(const char* path, GOIOContext* io) {
  std::ifstream file(path, std::ios::binary);
  auto* bytes = new std::string(std::istreambuf_iterator<char>(file), {});
  GsfInput* input = gsf_input_memory_new(reinterpret_cast<const guint8*>(bytes->data()),
                                         static_cast<gsf_off_t>(bytes->size()), FALSE);
  return workbook_view_new_from_input(input, nullptr, go_file_opener_for_id("Gnumeric_Excel:excel"), io,
                                      nullptr);
}

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

void Write(WorkbookView* view, const char* target, GOIOContext* io) {
  GsfOutput* output = gsf_output_memory_new();
  workbook_view_save_to_output(view, go_file_saver_for_id("Gnumeric_Excel:excel_biff8"), output, io);
  std::ofstream(target, std::ios::binary)
      .write(reinterpret_cast<const char*>(gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(output))),
             static_cast<std::streamsize>(gsf_output_size(output)));
}

}  // namespace

int main(int count, char** words) {
  if (count != 3 && count != 5) return 2;
  GOIOContext* io = Start();
  WorkbookView* view = Open(words[2], io);
  if (view == nullptr) return 1;
  Workbook* book = wb_view_get_workbook(view);
  if (count == 3) {
    const Sum sum = LookAtCells(book);
    std::printf("%zu %zu\n", sum.numbers, sum.letters);
  } else {
    Fill(workbook_sheet_by_index(book, 0), std::atoi(words[4]));
    workbook_recalc_all(book);
    Write(view, words[3], io);
  }
  std::fflush(stdout);
  std::_Exit(0);
}
