#include "exchange/record_search.h"

#include <algorithm>
#include <utility>

#include "automation/text.h"
#include "exchange/failure.h"
#include "exchange/typed_value.h"

namespace talvex {

using automation::Date;
using automation::Kind;
using automation::Variant;
using platform::spreadsheet::Position;
using platform::spreadsheet::Worksheet;

namespace {

// An order of what cells hold: by kind, and within a kind by value.
bool Less(const Variant& a, const Variant& b) {
  if (a.Type() != b.Type()) return a.Type() < b.Type();
  switch (a.Type()) {
    case Kind::Double:
      return a.As<double>() < b.As<double>();
    case Kind::Date:
      return a.As<Date>() < b.As<Date>();
    case Kind::Boolean:
      return !a.As<bool>() && b.As<bool>();
    case Kind::String:
      return automation::CompareFolded(a.As<std::string>(), b.As<std::string>()) < 0;
    default:
      return false;
  }
}

bool Satisfies(const Variant& cell, EExcelSearchOptions option, const Variant& wanted) {
  if (cell.Type() != wanted.Type()) return false;
  switch (option) {
    case EExcelSearchOptions::GreaterThan:
      return Less(wanted, cell);
    case EExcelSearchOptions::LessThan:
      return Less(cell, wanted);
    default:
      return !Less(cell, wanted) && !Less(wanted, cell);
  }
}

std::vector<Variant> ColumnOf(const markup::Block& block, const markup::Field& field, const Worksheet& sheet,
                              std::int32_t there) {
  std::vector<Variant> values;
  for (std::int32_t record = 0; record < there; ++record) {
    const Position at = field.value->at;
    const auto* cell = sheet.UsedCells().Find({at.row + record * block.rows, at.column});
    values.push_back(cell == nullptr ? Variant() : cell->value);
  }
  return values;
}

}  // namespace

RecordSearch::RecordSearch(const markup::Block& block, const Worksheet& sheet, std::int32_t there) {
  for (std::size_t index = 0; index < block.fields.size(); ++index) {
    const auto& field = block.fields[index];
    if (!field.search) continue;
    keys_.push_back({index, field.value->type, *field.search, ColumnOf(block, field, sheet, there)});
  }
  if (keys_.empty()) {
    throw Failure(failure_label::kWriting, "A block cannot be updated without a field to search by");
  }
  for (std::int32_t record = 0; record < there; ++record) {
    sorted_.push_back({keys_.front().cells[static_cast<std::size_t>(record)], record});
  }
  std::stable_sort(sorted_.begin(), sorted_.end(),
                   [](const Held& a, const Held& b) { return Less(a.value, b.value); });
}

// The part of the sorted column in which the first key is satisfied.
RecordSearch::Range RecordSearch::Candidates(const Variant& wanted) const {
  const auto by_kind = [](const auto& held, Kind kind) { return held.value.Type() < kind; };
  const auto kind_of = wanted.Type();
  const auto first = std::lower_bound(sorted_.begin(), sorted_.end(), kind_of, by_kind);
  const auto last = std::partition_point(first, sorted_.end(),
                                         [&](const Held& held) { return held.value.Type() == kind_of; });
  const auto begins =
      std::partition_point(first, last, [&](const Held& held) { return Less(held.value, wanted); });
  const auto ends =
      std::partition_point(begins, last, [&](const Held& held) { return !Less(wanted, held.value); });
  switch (keys_.front().option) {
    case EExcelSearchOptions::GreaterThan:
      return {ends, last};
    case EExcelSearchOptions::LessThan:
      return {first, begins};
    default:
      return {begins, ends};
  }
}

std::vector<std::int32_t> RecordSearch::Find(const std::vector<std::optional<std::string>>& texts) const {
  std::vector<Variant> wanted;
  for (const Key& key : keys_) {
    wanted.push_back(TypedValue(key.type, texts[key.field].value_or("")));
    if (wanted.back().IsEmpty()) return {};
  }
  std::vector<std::int32_t> found;
  const auto [first, last] = Candidates(wanted.front());
  for (auto candidate = first; candidate != last; ++candidate) {
    const auto record = static_cast<std::size_t>(candidate->record);
    bool all = true;
    for (std::size_t key = 1; key < keys_.size(); ++key) {
      all = all && Satisfies(keys_[key].cells[record], keys_[key].option, wanted[key]);
    }
    if (all) found.push_back(candidate->record);
  }
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace talvex
