#include "platform/database/record_data.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "automation/conversions.h"
#include "automation/error.h"
#include "platform/database/fault.h"
#include "platform/database/literals.h"

namespace talvex::platform::database {

using automation::Kind;
using automation::Variant;

namespace {

bool IsNumber(const Variant& value) noexcept {
  const Kind kind = value.Type();
  return kind == Kind::Int16 || kind == Kind::Int32 || kind == Kind::Double || kind == Kind::Currency;
}

// Whether writing one value over the other changes nothing. The kind in which a caller holds a number does
// not matter.
bool SameValue(const Variant& a, const Variant& b) {
  if (a.Type() != b.Type() && IsNumber(a) && IsNumber(b))
    return automation::ToDouble(a) == automation::ToDouble(b);
  return a == b;
}

// One text for a key, the same for equal keys only.
std::string KeyText(const std::vector<Variant>& keys) {
  std::string text;
  for (const Variant& key : keys) {
    if (key.IsNull() || key.IsEmpty()) {
      text += '-';
      continue;
    }
    const std::string part = key.Type() == Kind::Double ? NumberLiteral(key) : automation::ToText(key);
    text.append(std::to_string(part.size())).append(":").append(part);
  }
  return text;
}

std::vector<Variant> KeysOf(const RowSet& rows, std::size_t row, const std::vector<std::size_t>& columns) {
  std::vector<Variant> keys;
  keys.reserve(columns.size());
  for (const std::size_t column : columns) keys.push_back(rows.Stored(row, column).Exact());
  return keys;
}

Variant IdentityValue(std::int64_t identity) {
  const bool fits = identity >= std::numeric_limits<std::int32_t>::min() &&
                    identity <= std::numeric_limits<std::int32_t>::max();
  return fits ? Variant(static_cast<std::int32_t>(identity)) : Variant(static_cast<double>(identity));
}

}  // namespace

RecordData::RecordData(RowSet rows, bool complete, UpdateTarget target)
    : rows_(std::move(rows)),
      complete_(complete),
      block_size_(rows_.RowCount()),
      target_(std::move(target)) {}

Variant RecordData::Value(std::size_t row, std::size_t column) const {
  Variant value = rows_.Value(row, column);
  if (value.IsEmpty()) return automation::kNull;
  return value;
}

const RecordData::Kept* RecordData::FindKept(std::optional<std::size_t> row) const {
  if (!row || kept_.empty()) return nullptr;
  const auto found = kept_.find(*row);
  return found == kept_.end() ? nullptr : &found->second;
}

StoredValue RecordData::Before(std::size_t row, std::size_t column) const {
  const Kept* kept = FindKept(row);
  return kept != nullptr && kept->before[column] ? *kept->before[column] : rows_.Stored(row, column);
}

Variant RecordData::OriginalValue(std::size_t row, std::size_t column) const {
  const Kept* kept = FindKept(row);
  Variant value = kept != nullptr && kept->added ? Variant() : Before(row, column).value;
  return value.IsEmpty() ? Variant(automation::kNull) : value;
}

std::vector<Variant> RecordData::KeysBefore(std::size_t row) const {
  std::vector<Variant> keys;
  for (const std::size_t column : target_.keys) keys.push_back(Before(row, column).Exact());
  return keys;
}

std::size_t RecordData::Complete(const RowSet& whole) {
  if (whole.Columns() != rows_.Columns()) {
    throw automation::Error(
        automation::error_number::kInternalError, kErrorSource,
        "Internal error: the columns of " + target_.table + " have changed while it was read");
  }
  std::unordered_set<std::string> here;
  for (std::size_t row = 0; row < rows_.RowCount(); ++row) here.insert(KeyText(KeysBefore(row)));
  RowSet merged(rows_.Columns());
  for (std::size_t row = 0; row < block_size_; ++row) merged.AppendRow(rows_, row);
  for (std::size_t row = 0; row < whole.RowCount(); ++row) {
    if (!here.contains(KeyText(KeysOf(whole, row, target_.keys)))) merged.AppendRow(whole, row);
  }
  const std::size_t moved = merged.RowCount() - block_size_;
  for (std::size_t row = block_size_; row < rows_.RowCount(); ++row) merged.AppendRow(rows_, row);
  MoveAddedRows(moved);
  rows_ = std::move(merged);
  block_size_ += moved;
  complete_ = true;
  return moved;
}

void RecordData::MoveAddedRows(std::size_t by) {
  const auto moved = [&](std::size_t row) { return row < block_size_ ? row : row + by; };
  std::map<std::size_t, Kept> kept;
  for (auto& [row, change] : kept_) kept.emplace(moved(row), std::move(change));
  kept_ = std::move(kept);
  std::set<std::size_t> hidden;
  for (const std::size_t row : hidden_) hidden.insert(moved(row));
  hidden_ = std::move(hidden);
}

RowChange RecordData::ChangeOf(std::optional<std::size_t> row, const ColumnValues& values) const {
  const Kept* kept = FindKept(row);
  RowChange change;
  change.added = !row || (kept != nullptr && kept->added);
  if (!change.added) change.keys = KeysBefore(*row);
  for (std::size_t column = 0; column < values.size(); ++column) {
    const bool set_before = kept != nullptr && kept->before[column];
    if (!values[column] && !set_before) continue;
    Variant after = values[column] ? *values[column] : rows_.Value(*row, column);
    const StoredValue before = row ? Before(*row, column) : StoredValue();
    if (!change.added && SameValue(before.value, after)) continue;
    change.columns.push_back({column, before.Exact(), std::move(after)});
  }
  return change;
}

std::size_t RecordData::AddRow(const ColumnValues& values) {
  const std::size_t row = rows_.RowCount();
  for (const auto& value : values) rows_.Append(value ? *value : Variant());
  for (auto& [column, index] : indexes_) index.Touch(row);
  return row;
}

void RecordData::SetCell(std::size_t row, std::size_t column, const StoredValue& stored) {
  rows_.Set(row, column, stored);
  if (const auto index = indexes_.find(column); index != indexes_.end()) index->second.Touch(row);
}

std::size_t RecordData::Keep(std::optional<std::size_t> row, const ColumnValues& values) {
  if (!row) {
    const std::size_t added = AddRow(values);
    Kept& kept = kept_.emplace(added, Kept{true, {}}).first->second;
    for (const auto& value : values) {
      kept.before.push_back(value ? std::optional(StoredValue{*value}) : std::nullopt);
    }
    return added;
  }
  for (std::size_t column = 0; column < values.size(); ++column) {
    if (!values[column] || SameValue(rows_.Value(*row, column), *values[column])) continue;
    Kept& kept = kept_.try_emplace(*row, Kept{false, {}}).first->second;
    kept.before.resize(values.size());
    if (!kept.before[column]) kept.before[column] = rows_.Stored(*row, column);
    SetCell(*row, column, {*values[column]});
  }
  return *row;
}

std::size_t RecordData::Store(std::optional<std::size_t> row, const ColumnValues& values,
                              std::optional<std::int64_t> identity) {
  const std::size_t stored = Keep(row, values);
  Settle(stored, identity);
  return stored;
}

std::vector<std::size_t> RecordData::KeptRows() const {
  std::vector<std::size_t> rows;
  for (const auto& [row, change] : kept_) rows.push_back(row);
  return rows;
}

void RecordData::Settle(std::size_t row, std::optional<std::int64_t> identity) {
  kept_.erase(row);
  if (!identity || !target_.assigned) return;
  const Kind kind = rows_.TypeAt(row, *target_.assigned);
  if (kind == Kind::Empty || kind == Kind::Null) SetCell(row, *target_.assigned, {IdentityValue(*identity)});
}

void RecordData::TakeBack(std::size_t row) {
  const auto found = kept_.find(row);
  if (found == kept_.end()) return;
  const Kept kept = std::move(found->second);
  kept_.erase(found);
  if (kept.added) {
    hidden_.insert(row);
    return;
  }
  for (std::size_t column = 0; column < kept.before.size(); ++column) {
    if (kept.before[column]) SetCell(row, column, *kept.before[column]);
  }
}

ColumnIndex& RecordData::IndexOf(std::size_t column) {
  const auto found = indexes_.find(column);
  if (found == indexes_.end()) return indexes_.emplace(column, ColumnIndex(rows_, column)).first->second;
  if (found->second.Worn()) found->second = ColumnIndex(rows_, column);
  return found->second;
}

std::optional<std::vector<std::size_t>> RecordData::Candidates(const Filter& filter) {
  constexpr std::size_t kWorthAnIndex = 32;
  if (rows_.RowCount() < kWorthAnIndex) return std::nullopt;
  const ColumnIndex* best = nullptr;
  const Literal* literal = nullptr;
  std::size_t fewest = rows_.RowCount();
  for (const Filter::Equality& equality : filter.IndexableEqualities()) {
    const ColumnIndex& index = IndexOf(equality.column);
    const std::size_t count = index.CountCandidates(*equality.literal);
    if (best != nullptr && count >= fewest) continue;
    best = &index;
    literal = equality.literal;
    fewest = count;
    // Building another index would cost more than looking at so few rows.
    if (fewest <= rows_.RowCount() / 64) break;
  }
  if (best == nullptr) return std::nullopt;
  return best->Candidates(*literal);
}

std::vector<std::size_t> RecordData::RowsThatPass(const Filter& filter) {
  std::vector<std::size_t> rows;
  const auto look_at = [&](std::size_t row) {
    if (IsShown(row) && filter.Matches(rows_, row)) rows.push_back(row);
  };
  if (const auto candidates = Candidates(filter)) {
    std::for_each(candidates->begin(), candidates->end(), look_at);
  } else {
    for (std::size_t row = 0; row < rows_.RowCount(); ++row) look_at(row);
  }
  return rows;
}

}  // namespace talvex::platform::database
