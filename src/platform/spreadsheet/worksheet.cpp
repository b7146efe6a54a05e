#include "platform/spreadsheet/worksheet.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/spreadsheet/open_book.h"

namespace talvex::platform::spreadsheet {

namespace {

using automation::Error;
using automation::Kind;
using automation::Variant;
namespace number = automation::error_number;

// 65536 as "65,536", the way people read it.
std::string Grouped(std::int32_t value) {
  const std::string digits = std::to_string(value);
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && digits[i - 1] != '-' && (digits.size() - i) % 3 == 0) text += ',';
    text += digits[i];
  }
  return text;
}

void RequireRow(std::int32_t row) {
  if (row >= 1 && row <= kLastRow) return;
  throw Error(number::kSubscriptOutOfRange, kSource,
              "A sheet has the rows 1 to 65,536: there is no row " + Grouped(row));
}

void RequireColumn(std::int32_t column) {
  if (column >= 1 && column <= kLastColumn) return;
  throw Error(number::kSubscriptOutOfRange, kSource,
              "A sheet has the columns 1 to 256: there is no column " + Grouped(column));
}

void RequireRows(std::int32_t row, std::int32_t count) {
  RequireRow(row);
  if (count < 0 || count > kLastRow) {
    throw Error(number::kInvalidCall, kSource, "No number of rows: " + Grouped(count));
  }
  if (count > 0) RequireRow(row + count - 1);
}

// Characters beyond the basic plane, which take four bytes in UTF-8, count twice.
std::size_t Utf16Units(const std::string& text) {
  const auto wide =
      std::count_if(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xF0; });
  return automation::CharacterCount(text) + static_cast<std::size_t>(wide);
}

void RequireText(const std::string& text) {
  if (!automation::IsUtf8(text) || text.find('\0') != std::string::npos) {
    throw Error(number::kInvalidCall, kSource, "A cell holds no text that has NUL or is not UTF-8");
  }
  if (Utf16Units(text) > kLongestText) {
    throw Error(number::kInvalidCall, kSource, "A cell holds no text of more than 32,767 characters");
  }
}

// The value as one of the kinds that a cell holds.
Variant ForCell(const Variant& value) {
  switch (value.Type()) {
    case Kind::Empty:
    case Kind::Null:
      return {};
    case Kind::String:
      RequireText(value.As<std::string>());
      return value.As<std::string>().empty() ? Variant() : value;
    case Kind::Boolean:
    case Kind::Date:
      return value;
    default:
      break;
  }
  const double real = automation::ToDouble(value);
  if (!std::isfinite(real)) throw Error(number::kOverflow, kSource, "A cell holds no infinite number");
  return real;
}

bool IsNothing(const Cell& cell) { return cell.value.IsEmpty() && cell.formula.empty(); }

}  // namespace

Worksheet::Worksheet(std::shared_ptr<OpenBook> book, std::size_t index)
    : book_(std::move(book)), index_(index) {}

Worksheet::~Worksheet() = default;

Sheet& Worksheet::Own() const {
  book_->RequireOpen();
  return book_->content.sheets[index_];
}

const Cells& Worksheet::UsedCells() const { return Own().cells; }

std::string Worksheet::Name() const { return Own().name; }

void Worksheet::SetName(const std::string& name) {
  Sheet& own = Own();
  book_->RequireFreeSheetName(name, index_);
  if (name == own.name) return;
  book_->edits.emplace_back(edit::RenameSheet{own.name, name});
  own.name = name;
}

std::int32_t Worksheet::FirstRow() const {
  const Cells& cells = UsedCells();
  return cells.IsEmpty() ? 1 : cells.ByRow().begin()->first;
}

std::int32_t Worksheet::FirstColumn() const {
  const Cells& cells = UsedCells();
  std::int32_t first = cells.IsEmpty() ? 1 : kLastColumn;
  for (const auto& [row, used] : cells.ByRow()) first = std::min(first, used.front().column);
  return first;
}

std::int32_t Worksheet::RowCount() const {
  const Cells& cells = UsedCells();
  return cells.IsEmpty() ? 0 : cells.ByRow().rbegin()->first - cells.ByRow().begin()->first + 1;
}

std::int32_t Worksheet::ColumnCount() const {
  const Cells& cells = UsedCells();
  if (cells.IsEmpty()) return 0;
  std::int32_t last = 1;
  for (const auto& [row, used] : cells.ByRow()) last = std::max(last, used.back().column);
  return last - FirstColumn() + 1;
}

const Cell* Worksheet::Find(std::int32_t row, std::int32_t column) const {
  const Cells& cells = UsedCells();
  RequireRow(row);
  RequireColumn(column);
  return cells.Find({row, column});
}

void Worksheet::Put(Position at, Cell cell) {
  Sheet& own = Own();
  RequireRow(at.row);
  RequireColumn(at.column);
  book_->NoteCell(own.name, at, cell);
  if (IsNothing(cell)) {
    own.cells.Erase(at);
  } else {
    own.cells.Set(at, std::move(cell));
  }
}

Variant Worksheet::Value(std::int32_t row, std::int32_t column) {
  const Cell* cell = Find(row, column);
  return cell == nullptr ? Variant() : cell->value;
}

void Worksheet::SetValue(std::int32_t row, std::int32_t column, const Variant& value) {
  Put({row, column}, {ForCell(value), {}});
}

bool Worksheet::HasFormula(std::int32_t row, std::int32_t column) { return !Formula(row, column).empty(); }

std::string Worksheet::Formula(std::int32_t row, std::int32_t column) {
  const Cell* cell = Find(row, column);
  return cell == nullptr ? std::string() : cell->formula;
}

void Worksheet::SetFormula(std::int32_t row, std::int32_t column, const std::string& formula) {
  RequireText(formula);
  const bool marked = formula.starts_with('=');
  if (formula.size() == (marked ? 1U : 0U)) {
    throw Error(number::kInvalidCall, kSource, "No formula: \"" + formula + "\"");
  }
  Put({row, column}, {{}, marked ? formula : "=" + formula});
}

void Worksheet::Clear(std::int32_t row, std::int32_t column) { Put({row, column}, {}); }

std::string Worksheet::Address(std::int32_t row, std::int32_t column) {
  book_->RequireOpen();
  RequireRow(row);
  RequireColumn(column);
  std::string letters;
  for (std::int32_t rest = column; rest > 0; rest = (rest - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
  }
  return letters + std::to_string(row);
}

void Worksheet::InsertRows(std::int32_t row, std::int32_t count) {
  Sheet& own = Own();
  RequireRows(row, count);
  if (count == 0) return;
  const auto& rows = own.cells.ByRow();
  if (!rows.empty() && rows.rbegin()->first >= row) RequireRow(rows.rbegin()->first + count);
  book_->edits.emplace_back(edit::InsertRows{own.name, row, count});
  own.cells.MoveDown(row, count);
}

void Worksheet::CopyRows(std::int32_t row, std::int32_t count, std::int32_t target) {
  Copy(row, count, target, false);
}

void Worksheet::CopyRowStyles(std::int32_t row, std::int32_t count, std::int32_t target) {
  Copy(row, count, target, true);
}

void Worksheet::Copy(std::int32_t row, std::int32_t count, std::int32_t target, bool only_styles) {
  Sheet& own = Own();
  RequireRows(row, count);
  RequireRows(target, count);
  if (count == 0 || row == target) return;
  book_->edits.emplace_back(edit::CopyRows{own.name, row, count, target, only_styles});
  if (!only_styles) own.cells.CopyRows(row, count, target);
}

}  // namespace talvex::platform::spreadsheet
