#include "sheet/save.h"

#include "sheet/open_workbook.h"

// clang-format off
#include <clipboard.h>
#include <position.h>
#include <ranges.h>
#include <sheet-merge.h>
#include <sheet.h>
#include <value.h>
// clang-format on
#include <goffice/app/file.h>
#include <goffice/app/io-context.h>
#include <gsf/gsf-output-memory.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/cell_values.h"
#include "sheet/load.h"
#include "sheet/properties.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

using nlohmann::json;
namespace refusals = message::refusals;

// The edits, made one after the other.
class Editor {
 public:
  explicit Editor(const OpenWorkbook& opened) : book_(opened.Book()), context_(NewContext(report_)) {}

  void Make(const json& edit) {
    const auto kind = edit.at("edit").get<std::string>();
    if (kind == message::edits::kCells) {
      Sheet* sheet = SheetOf(edit);
      message::ReadCells(edit.at("cells"), [&](message::Cell&& cell) { WriteCell(sheet, cell); });
    } else if (kind == message::edits::kAdd) {
      Add(edit.at("name").get<std::string>());
    } else if (kind == message::edits::kRename) {
      Rename(SheetOf(edit), edit.at("name").get<std::string>());
    } else if (kind == message::edits::kInsert) {
      Insert(SheetOf(edit), RowOf(edit, "row"), edit.at("count").get<int>());
    } else if (kind == message::edits::kCopy) {
      Copy(SheetOf(edit), edit);
    } else if (kind == message::edits::kProperty) {
      SetProperty(book_, edit.at("name").get<std::string>(), message::ReadValue(edit.at("value")));
    } else {
      throw Refusal(refusals::kInternal, "there is no edit " + kind);
    }
  }

 private:
  [[noreturn]] void Refuse(const std::string& what) const {
    throw Refusal(refusals::kEdit, what + (report_.errors.empty() ? "" : ": " + report_.errors));
  }

  [[nodiscard]] Sheet* SheetOf(const json& edit) const {
    const auto name = edit.at("sheet").get<std::string>();
    Sheet* sheet = workbook_sheet_by_name(book_, name.c_str());
    if (sheet == nullptr) throw Refusal(refusals::kEdit, "There is no sheet \"" + name + "\"");
    return sheet;
  }

  // A row as the library counts it, from 0.
  [[nodiscard]] static int RowOf(const json& edit, const char* which) {
    const int row = edit.at(which).get<int>();
    if (row < 1 || row > message::kRows)
      throw Refusal(refusals::kEdit, "There is no row " + std::to_string(row));
    return row - 1;
  }

  void Add(const std::string& name) {
    Rename(workbook_sheet_add(book_, -1, message::kColumns, message::kRows), name);
  }

  void Rename(Sheet* sheet, const std::string& name) {
    Sheet* taken = workbook_sheet_by_name(book_, name.c_str());
    if (taken != nullptr && taken != sheet) Refuse("There is a sheet \"" + name + "\" already");
    g_object_set(sheet, "name", name.c_str(), nullptr);
  }

  void Insert(Sheet* sheet, int row, int count) {
    const GnmRange used = sheet_get_cells_extent(sheet);
    const bool pushed_off = used.end.row >= row && used.end.row + count >= message::kRows;
    if (count < 1 || count > message::kRows || pushed_off) {
      Refuse("Inserting " + std::to_string(count) + " rows would push cells off the sheet");
    }
    if (sheet_insert_rows(sheet, row, count, nullptr, context_.get()) != 0) {
      Refuse("Rows cannot be inserted before row " + std::to_string(row + 1));
    }
  }

  void Copy(Sheet* sheet, const json& edit) {
    const int row = RowOf(edit, "row");
    const int target = RowOf(edit, "target");
    const int count = edit.at("count").get<int>();
    if (count < 1 || row + count > message::kRows || target + count > message::kRows) {
      Refuse("There are no " + std::to_string(count) + " rows to copy");
    }
    const bool only_styles = edit.at("only_styles").get<bool>();
    GnmRange from;
    GnmRange to;
    range_init_rows(&from, sheet, row, row + count - 1);
    range_init_rows(&to, sheet, target, target + count - 1);
    GnmCellRegion* copied = clipboard_copy_range(sheet, &from);
    // Otherwise the library lays out the text of every cell that it pastes, which nobody is going to look at.
    // Formulas are calculated before the file is written.
    const int flags =
        (only_styles ? PASTE_FORMATS : PASTE_CONTENTS | PASTE_FORMATS) | PASTE_ROW_HEIGHTS | PASTE_NO_RECALC;
    GnmPasteTarget place;
    paste_target_init(&place, sheet, &to, static_cast<GnmPasteFlags>(flags));
    const bool failed = clipboard_paste_region(copied, &place, context_.get()) != 0;
    cellregion_unref(copied);
    if (failed) Refuse("Rows cannot be copied to row " + std::to_string(target + 1));
    if (only_styles) CopyMerged(sheet, from, to);
  }

  // The library takes them along with contents only.
  void CopyMerged(Sheet* sheet, const GnmRange& from, const GnmRange& to) {
    const auto each = [&](const GnmRange& rows, auto what) {
      GSList* found = gnm_sheet_merge_get_overlap(sheet, &rows);
      std::vector<GnmRange> ranges;
      for (GSList* item = found; item != nullptr; item = item->next) {
        ranges.push_back(*static_cast<const GnmRange*>(item->data));
      }
      g_slist_free(found);
      for (const GnmRange& range : ranges) what(range);
    };
    each(to, [&](const GnmRange& range) { gnm_sheet_merge_remove(sheet, &range); });
    each(from, [&](GnmRange range) {
      if (range.start.row < from.start.row || range.end.row > from.end.row) return;
      range_translate(&range, sheet, 0, to.start.row - from.start.row);
      gnm_sheet_merge_add(sheet, &range, FALSE, context_.get());
    });
  }

  Workbook* book_;
  Report report_;
  Held<GOCmdContext> context_;
};

// Whether the text has a character that two units of UTF-16 stand for.
bool HasWideCharacter(const char* text) {
  for (; *text != '\0'; ++text) {
    if (static_cast<unsigned char>(*text) >= 0xF0) return true;
  }
  return false;
}

// Some readers count the characters of such a formula's result otherwise than the format does, and refuse the
// file. Without a result it is for them to read, and whoever calculates finds it again.
void DropResultsWithWideCharacters(Workbook* book) {
  for (int index = 0; index < workbook_sheet_count(book); ++index) {
    sheet_cell_foreach(
        workbook_sheet_by_index(book, index),
        [](gpointer /*key*/, gpointer item, gpointer /*data*/) {
          auto* cell = static_cast<GnmCell*>(item);
          if (cell->base.texpr == nullptr || !VALUE_IS_STRING(cell->value)) return;
          if (!HasWideCharacter(value_peek_string(cell->value))) return;
          value_release(cell->value);
          cell->value = value_new_empty();
        },
        nullptr);
  }
}

// The workbook's file, in memory: this program never writes one.
std::vector<std::uint8_t> FileOf(const OpenWorkbook& opened) {
  const GOFileSaver* saver = go_file_saver_for_id("Gnumeric_Excel:excel_biff8");
  if (saver == nullptr) throw Refusal(refusals::kInternal, "the library cannot write workbooks");
  Report report;
  const Held<GOCmdContext> context = NewContext(report);
  const Held<GOIOContext> io(go_io_context_new(context.get()));
  const Held<GsfOutput> output(gsf_output_memory_new());
  workbook_view_save_to_output(opened.View(), saver, output.get(), io.get());
  if (go_io_error_occurred(io.get()) != 0) {
    go_io_error_display(io.get());
    throw Refusal(refusals::kInternal, "the workbook cannot be written: " + report.errors);
  }
  if (HasCutTexts()) {
    throw Refusal(refusals::kEdit,
                  "A formula holds no text of more than 255 characters when one of them, such as an emoji, "
                  "takes the room of two");
  }
  const guint8* bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(output.get()));
  return {bytes, bytes + gsf_output_size(output.get())};
}

}  // namespace

json Save(const json& asked) {
  const OpenWorkbook opened(asked.at("base").get<std::string>());
  Editor editor(opened);
  for (const auto& edit : asked.at("edits")) editor.Make(edit);
  workbook_recalc_all(opened.Book());
  json formulas = ReadSheets(opened.Book(), true);
  DropResultsWithWideCharacters(opened.Book());
  return {{"file", json::binary(FileOf(opened))}, {"formulas", std::move(formulas)}};
}

}  // namespace talvex::sheet
