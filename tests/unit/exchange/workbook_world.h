// What tests of BudgetExcel work in: workbooks in memory, and texts in two languages.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "automation/conversions.h"
#include "exchange/budget_excel.h"
#include "exchange/cell_address.h"
#include "platform/spreadsheet/workbook.h"
#include "support/stood_in_test.h"

namespace talvex::test {

using platform::spreadsheet::Content;
using platform::spreadsheet::Sheet;
using platform::spreadsheet::Workbook;

// Makes the changes of an edit that concern what cells hold.
struct MakeEdit {
  Content& content;

  void operator()(const platform::spreadsheet::edit::SetCells& edit) const {
    for (const auto& [row, cells] : edit.cells.ByRow()) {
      for (const auto& [column, cell] : cells) Of(edit.sheet).Set({row, column}, cell);
    }
  }
  void operator()(const platform::spreadsheet::edit::AddSheet& edit) const {
    content.sheets.push_back({edit.name, {}});
  }
  void operator()(const platform::spreadsheet::edit::InsertRows& edit) const {
    Of(edit.sheet).MoveDown(edit.row, edit.count);
  }
  void operator()(const platform::spreadsheet::edit::CopyRows& edit) const {
    if (!edit.only_styles) Of(edit.sheet).CopyRows(edit.row, edit.count, edit.target);
  }
  void operator()(const platform::spreadsheet::edit::RenameSheet& /*edit*/) const {}
  void operator()(const platform::spreadsheet::edit::SetProperty& /*edit*/) const {}

  [[nodiscard]] platform::spreadsheet::Cells& Of(const std::string& name) const {
    for (auto& sheet : content.sheets) {
      if (sheet.name == name) return sheet.cells;
    }
    throw automation::Error(automation::error_number::kInvalidCall, "Stand-in", "no sheet " + name);
  }
};

// Holds workbooks by their paths and keeps the changes that it is asked to make. It knows nothing of
// formulas: any text is one, a moved one keeps its references, and what one gives is what the test says, or
// nothing. What formulas are is tested with talvex-sheet itself.
class FakeEngine final : public platform::spreadsheet::Engine {
 public:
  std::map<std::string, Content> files;
  std::map<std::string, automation::Variant> results;  // What a formula of that text gives.
  std::optional<automation::Error> read_failure;
  std::optional<automation::Error> rewrite_failure;
  mutable std::vector<std::vector<platform::spreadsheet::Edit>> rewrites;

  [[nodiscard]] Content Read(const std::string& path) const override {
    if (read_failure) throw *read_failure;
    return files.at(path);
  }
  [[nodiscard]] platform::spreadsheet::Rewritten Rewrite(
      const std::string& path, const std::vector<platform::spreadsheet::Edit>& edits) const override {
    if (rewrite_failure) throw *rewrite_failure;
    rewrites.push_back(edits);
    Content content = files.at(path);
    for (const auto& edit : edits) std::visit(MakeEdit{content}, edit);
    return {"rewritten", Calculated(content.sheets)};
  }

 private:
  [[nodiscard]] std::vector<Sheet> Calculated(const std::vector<Sheet>& sheets) const {
    std::vector<Sheet> formulas;
    for (const Sheet& sheet : sheets) {
      formulas.push_back({sheet.name, {}});
      for (const auto& [row, cells] : sheet.cells.ByRow()) {
        for (const auto& [column, cell] : cells) {
          if (cell.formula.empty()) continue;
          const auto result = results.find(cell.formula);
          formulas.back().cells.Set(
              {row, column},
              {result == results.end() ? automation::Variant() : result->second, cell.formula});
        }
      }
    }
    return formulas;
  }
};

// A cell's content as a test writes it: a text that begins with "=" is a formula.
using CellText = std::pair<const char*, automation::Variant>;

inline Sheet MadeSheet(const std::string& name, const std::vector<CellText>& cells) {
  Sheet sheet{name, {}};
  for (const auto& [address, value] : cells) {
    const bool is_formula = value.IsString() && value.As<std::string>().starts_with('=');
    platform::spreadsheet::Cell cell{value, {}};
    if (is_formula) cell = {{}, value.As<std::string>()};
    sheet.cells.Set(ReadAddress(address), cell);
  }
  return sheet;
}

// The cells of a sheet: texts in quotes, formulas with their "=", all else in the default text.
inline std::string Shown(Workbook& book, const automation::Variant& sheet = 1) {
  const auto shown = book.Sheet(sheet);
  std::string text;
  for (const auto& [row, cells] : shown->UsedCells().ByRow()) {
    for (const auto& [column, cell] : cells) {
      const std::string value = automation::ToText(cell.value);
      text += (text.empty() ? "" : " | ") + shown->Address(row, column) + " ";
      text += !cell.formula.empty() ? cell.formula : cell.value.IsString() ? '"' + value + '"' : value;
    }
  }
  return text;
}

class WorkbookWorld {
 public:
  explicit WorkbookWorld(StoodIn& test) : test_(test), engine_(std::make_shared<FakeEngine>()) {
    test.Replace<RecordingUser>();
    test.Environment().spreadsheets = engine_;
  }

  [[nodiscard]] std::string Path(const std::string& name) const { return test_.Site().Path(name); }
  [[nodiscard]] FakeEngine& Engine() noexcept { return *engine_; }
  [[nodiscard]] StoodIn& Test() noexcept { return test_; }

  // A file with that content; returns its path.
  std::string Make(const std::string& name, Content content) {
    const std::string path = Path(name);
    platform::Environment::Current().files->Replace(path, "original");
    engine_->files[path] = std::move(content);
    return path;
  }

  // Writes the markup into a new workbook of such a template, or into such a workbook.
  std::shared_ptr<Workbook> Write(const std::string& xml, const std::vector<CellText>& cells = {},
                                  EWriteMode mode = EWriteMode::Create) {
    const bool is_template = mode == EWriteMode::Create;
    const std::string path = Make(is_template ? "base.XLT" : "base.xls", {{MadeSheet("Lines", cells)}, {}});
    error_.clear();
    return BudgetExcel().TransformXMLToExcel(xml, mode, 0, is_template, error_, "d.reed", path);
  }

  // What the sheet holds then; the error text when it failed.
  std::string Written(const std::string& xml, const std::vector<CellText>& cells = {},
                      EWriteMode mode = EWriteMode::Create) {
    const auto book = Write(xml, cells, mode);
    return book == nullptr ? error_ : Shown(*book);
  }

  [[nodiscard]] const std::string& Error() const noexcept { return error_; }

 private:
  StoodIn& test_;
  std::shared_ptr<FakeEngine> engine_;
  std::string error_;
};

inline void WithWorkbooks(const std::function<void(WorkbookWorld&)>& body) {
  WithStandIns([&](StoodIn& test) {
    WorkbookWorld world(test);
    body(world);
  });
}

// The lines that failures add, in English.
inline const std::string kNotRead = "\r\nThe workbook could not be read-";
inline const std::string kNotOpened = "\r\nThe workbook could not be opened-";
inline const std::string kNoWorkbook = "\r\nThe file is not a workbook of the expected kind-";
inline const std::string kNoTemplate = "\r\nThe workbook template could not be opened-";
inline const std::string kNotWritten = "\r\nThe data could not be written to the workbook-";
inline const std::string kNoPosition = "\r\nThe position of a value in the workbook could not be determined-";
inline const std::string kNotFilledIn = "\r\nThe column, row or value of a cell could not be filled in-";

// Markup of the sheet "Lines".
inline std::string OnLines(const std::string& markup) {
  return "<m B2BWORKSHEET=\"Lines\">" + markup + "</m>";
}

}  // namespace talvex::test
