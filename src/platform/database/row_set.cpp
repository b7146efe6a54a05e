#include "platform/database/row_set.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "automation/error.h"
#include "automation/text.h"

namespace talvex::platform::database {

using automation::Date;
using automation::Kind;
using automation::Variant;

Variant StoredValue::Exact() const {
  if (fraction == 0 || value.Type() != Kind::Date) return value;
  constexpr std::size_t kDigits = 9;
  std::string digits = std::to_string(fraction);
  digits.insert(0, kDigits - std::min(kDigits, digits.size()), '0');
  digits.resize(digits.find_last_not_of('0') + 1);
  return value.As<Date>().ToIso() + "." + digits;
}

std::optional<std::size_t> RowSet::Find(std::string_view column) const noexcept {
  // Names mostly come in the case of the tables; comparing them as they are is several times quicker.
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i] == column) return i;
  }
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (automation::SameFolded(columns_[i], column)) return i;
  }
  return std::nullopt;
}

std::size_t RowSet::RowCount() const noexcept {
  return pages_.empty() ? 0 : (pages_.size() - 1) * kRowsPerPage + pages_.back().size() / columns_.size();
}

void RowSet::Add(Cell cell) {
  const std::size_t full = kRowsPerPage * columns_.size();
  if (pages_.empty() || pages_.back().size() == full) {
    pages_.emplace_back();
    // The first page grows with its rows: most sets are small.
    if (pages_.size() > 1) pages_.back().reserve(full);
  }
  pages_.back().push_back(cell);
}

void RowSet::Append(automation::NullValue) {
  Cell cell;
  cell.kind = Kind::Null;
  Add(cell);
}

void RowSet::Append(std::int32_t value) {
  Cell cell;
  cell.kind = Kind::Int32;
  cell.whole = value;
  Add(cell);
}

void RowSet::Append(double value) { Add(MakeCell(value)); }

void RowSet::Append(Date value, std::uint32_t fraction) {
  Cell cell;
  cell.kind = Kind::Date;
  cell.length = fraction;
  cell.whole = value.Seconds();
  Add(cell);
}

void RowSet::Append(std::string_view text) { Add(MakeTextCell(text)); }

void RowSet::AppendRow(const RowSet& from, std::size_t row) {
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    const Cell& cell = from.At(row, column);
    Add(cell.kind == Kind::String ? MakeTextCell(from.TextAt(row, column)) : cell);
  }
}

RowSet::Cell RowSet::MakeTextCell(std::string_view text) {
  if (block_used_ + text.size() > block_size_) {
    // Blocks grow with the number of blocks, so that a single row costs little and many rows few allocations.
    constexpr std::size_t kSmallest = 256;
    constexpr std::size_t kLargest = 65536;
    const std::size_t wanted = std::min(kLargest, block_size_ == 0 ? kSmallest : block_size_ * 4);
    block_size_ = std::max(wanted, text.size());
    block_used_ = 0;
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(block_size_));
  }
  Cell cell;
  cell.kind = Kind::String;
  cell.length = static_cast<std::uint32_t>(text.size());
  cell.text = blocks_.empty() ? "" : blocks_.back().get() + block_used_;
  if (!text.empty()) std::memcpy(blocks_.back().get() + block_used_, text.data(), text.size());
  block_used_ += text.size();
  return cell;
}

RowSet::Cell RowSet::MakeCell(const Variant& value) {
  Cell cell;
  cell.kind = value.Type();
  switch (value.Type()) {
    case Kind::Empty:
    case Kind::Null:
      return cell;
    case Kind::Boolean:
      cell.whole = value.As<bool>() ? 1 : 0;
      return cell;
    case Kind::Int16:
      cell.whole = value.As<std::int16_t>();
      return cell;
    case Kind::Int32:
      cell.whole = value.As<std::int32_t>();
      return cell;
    case Kind::Currency:
      cell.whole = value.As<automation::Currency>().Units();
      return cell;
    case Kind::Date:
      cell.whole = value.As<Date>().Seconds();
      return cell;
    case Kind::String:
      return MakeTextCell(value.As<std::string>());
    case Kind::Double:
      cell.number = value.As<double>();
      if (std::isfinite(cell.number)) return cell;
      break;
    default:
      break;
  }
  const bool number = value.Type() == Kind::Double;
  throw automation::Error(
      automation::error_number::kValueTooLongOrWrongType, "Talvex.Platform.Database",
      number ? "A number that is not finite cannot be stored"
             : "A value of kind " + std::string(automation::KindName(value.Type())) + " cannot be stored");
}

Variant RowSet::Value(std::size_t row, std::size_t column) const {
  const Cell& cell = At(row, column);
  switch (cell.kind) {
    case Kind::Null:
      return automation::kNull;
    case Kind::Boolean:
      return cell.whole != 0;
    case Kind::Int16:
      return static_cast<std::int16_t>(cell.whole);
    case Kind::Int32:
      return static_cast<std::int32_t>(cell.whole);
    case Kind::Double:
      return cell.number;
    case Kind::Currency:
      return automation::Currency::FromUnits(cell.whole);
    case Kind::Date:
      return Date::FromSeconds(cell.whole);
    case Kind::String:
      return std::string_view(cell.text, cell.length);
    default:
      return {};
  }
}

StoredValue RowSet::Stored(std::size_t row, std::size_t column) const {
  const Cell& cell = At(row, column);
  return {Value(row, column), cell.kind == Kind::Date ? cell.length : 0};
}

void RowSet::Set(std::size_t row, std::size_t column, const StoredValue& stored) {
  Cell cell = MakeCell(stored.value);
  if (cell.kind == Kind::Date) cell.length = stored.fraction;
  pages_[row / kRowsPerPage][row % kRowsPerPage * columns_.size() + column] = cell;
}

Kind RowSet::TypeAt(std::size_t row, std::size_t column) const noexcept { return At(row, column).kind; }

std::string_view RowSet::TextAt(std::size_t row, std::size_t column) const noexcept {
  const Cell& cell = At(row, column);
  return cell.kind == Kind::String ? std::string_view(cell.text, cell.length) : std::string_view();
}

void RowSet::RemoveLastRow() {
  pages_.back().resize(pages_.back().size() - columns_.size());
  if (pages_.back().empty()) pages_.pop_back();
}

}  // namespace talvex::platform::database
