#include "exchange/markup_writer.h"

#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "automation/text.h"
#include "exchange/block_layout.h"
#include "exchange/cell_address.h"
#include "exchange/document_properties.h"
#include "exchange/failure.h"
#include "exchange/placeholders.h"
#include "exchange/typed_value.h"

namespace talvex {

using automation::Variant;
using markup::Block;
using markup::Field;
using markup::Item;
using markup::Part;
using markup::Value;
using markup::ValueType;
using platform::spreadsheet::Position;
using platform::spreadsheet::Workbook;
using platform::spreadsheet::Worksheet;

namespace {

using Text = std::optional<std::string>;

// How far a record stands from its block's first one.
struct Distance {
  std::int32_t rows;
  std::int32_t columns;
};

Position At(Position first, Distance distance) {
  return OnSheet(std::int64_t{first.row} + distance.rows, std::int64_t{first.column} + distance.columns);
}

class Writer {
 public:
  explicit Writer(Workbook& book) : book_(book) {}

  void Write(const std::vector<Part>& parts, EWriteMode mode) {
    for (const Part& part : parts) Plan(part, mode);
    for (auto& [name, sheet] : sheets_) sheet.MakeRoom();
    for (const Part& part : parts) {
      const TargetSheet& target = sheets_.at(part.sheet);
      std::visit([&](const auto& what) { Put(target, what); }, part.what);
    }
    Finish();
  }

 private:
  struct Cell {
    Worksheet* sheet;
    Position at;
  };

  void Plan(const Part& part, EWriteMode mode) {
    const auto found = sheets_.find(part.sheet);
    TargetSheet& target =
        found != sheets_.end()
            ? found->second
            : sheets_.emplace(part.sheet, Labelled(failure_label::kPosition, [&] { return SheetOf(part); }))
                  .first->second;
    const auto* block = std::get_if<Block>(&part.what);
    if (block != nullptr && block->mode == EExcelIndexMode::Sequence) target.Plan(*block, mode);
  }

  TargetSheet SheetOf(const Part& part) {
    return TargetSheet(book_.HasSheet(part.sheet) ? book_.Sheet(part.sheet) : book_.AddSheet(part.sheet));
  }

  void Put(const TargetSheet& target, const Item& item) {
    Worksheet& sheet = target.Sheet();
    const Text data = item.value ? Text(item.data) : std::nullopt;
    if (item.label) PutLabel({&sheet, target.Moved(item.label->at)}, item.label->text, data);
    if (item.value) PutValue({&sheet, target.Moved(item.value->at)}, *item.value, item.data);
  }

  void Put(const TargetSheet& target, const Block& block) {
    for (const Field& field : block.fields) {
      if (!field.label || block.Contains(field.label->at)) continue;
      PutLabel({&target.Sheet(), target.Moved(field.label->at)}, field.label->text, std::nullopt);
    }
    const markup::RecordReader reader(block);
    if (block.mode == EExcelIndexMode::Scattered) {
      for (const auto& record : block.records) {
        const Position at = target.Moved(markup::PlaceOf(*record));
        const Distance distance{at.row - block.first.row, at.column - block.first.column};
        PutRecord(target.Sheet(), block, distance, reader.Read(*record), false);
      }
      return;
    }
    const std::int32_t moved = target.Moved(block.first).row - block.first.row;
    for (const Target& one : target.TargetsOf(block)) {
      const Distance distance{moved + one.place * block.rows, 0};
      PutRecord(target.Sheet(), block, distance, reader.Read(*one.record), one.found);
    }
  }

  // In a record that was there, the fields for which there is no text keep what they hold.
  void PutRecord(Worksheet& sheet, const Block& block, Distance distance, const std::vector<Text>& texts,
                 bool found) {
    for (std::size_t index = 0; index < block.fields.size(); ++index) {
      const Field& field = block.fields[index];
      const Text& text = texts[index];
      if (found && !text) continue;
      if (field.label && block.Contains(field.label->at)) {
        PutLabel({&sheet, At(field.label->at, distance)}, field.label->text, text.value_or(""));
      }
      if (field.value) PutValue({&sheet, At(field.value->at, distance)}, *field.value, text.value_or(""));
    }
  }

  void PutLabel(Cell cell, const std::string& text, const Text& data) {
    PutContent(cell, HasPlaceholders(text) ? FillInText(text, AddressOf(cell), data) : text);
  }

  void PutValue(Cell cell, const Value& value, const std::string& data) {
    if (IsFormula(value.type)) {
      PutFormula(cell, value, data);
    } else if (value.pattern && HasPlaceholders(*value.pattern)) {
      PutContent(cell, TypedValue(value.type, FillInText(*value.pattern, AddressOf(cell), data)));
    } else {
      PutContent(cell, TypedValue(value.type, value.pattern ? *value.pattern : data));
    }
    if (value.temporary) temporaries_.push_back(cell);
  }

  void PutFormula(Cell cell, const Value& value, const std::string& data) {
    std::string formula = value.pattern ? *value.pattern : data;
    if (HasPlaceholders(formula)) {
      // The element's own text is the formula when there is no other, and cannot be a value in itself.
      formula = FillInFormula(formula, AddressOf(cell), value.pattern ? Text(data) : std::nullopt);
    }
    if (automation::Trimmed(formula).empty()) return PutContent(cell, Variant());
    cell.sheet->SetFormula(cell.at.row, cell.at.column, formula);
    if (value.type == ValueType::Result) results_.push_back(cell);
  }

  static void PutContent(Cell cell, const Variant& value) {
    const bool is_nothing = value.IsEmpty() || (value.IsString() && value.As<std::string>().empty());
    // An empty cell needs no emptying: rows of records have many.
    if (is_nothing && cell.sheet->UsedCells().Find(cell.at) == nullptr) return;
    cell.sheet->SetValue(cell.at.row, cell.at.column, value);
  }

  static std::string AddressOf(Cell cell) { return cell.sheet->Address(cell.at.row, cell.at.column); }

  // Formulas of which only the result is wanted become that, and then what they were calculated with goes.
  void Finish() {
    if (!results_.empty()) book_.Calculate();
    for (const Cell& cell : results_) {
      PutContent(cell, cell.sheet->Value(cell.at.row, cell.at.column));
    }
    for (const Cell& cell : temporaries_) PutContent(cell, Variant());
  }

  Workbook& book_;
  std::unordered_map<std::string, TargetSheet, automation::FoldedHash, automation::FoldedEqual> sheets_;
  std::vector<Cell> results_;
  std::vector<Cell> temporaries_;
};

}  // namespace

void ApplyMarkup(const std::string& xml, EWriteMode mode, Workbook& book) {
  platform::xml::XmlDocument document;
  if (!document.LoadXml(xml)) throw Failure(failure_label::kWriting, document.Error().reason);
  const std::vector<Part> parts = markup::ReadParts(document);
  Writer(book).Write(parts, mode);
  for (const auto& property : markup::ReadProperties(document)) {
    SetDocumentProperty(book, property.name, property.value, property.type);
  }
}

}  // namespace talvex
