#include "platform/database/column_index.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "automation/conversions.h"
#include "automation/text.h"

namespace talvex::platform::database {

using automation::Kind;

namespace {

std::size_t HashOf(double number) noexcept {
  return std::hash<double>()(number);  // The same for 0 and -0, which compare as equal.
}

std::size_t HashOf(automation::Date date) noexcept { return std::hash<std::int64_t>()(date.Seconds()); }

std::size_t HashOf(std::string_view text) noexcept { return automation::FoldedHash()(text); }

// Nothing for Null, which equals no literal.
std::optional<std::size_t> HashOfCell(const RowSet& rows, std::size_t row, std::size_t column) {
  switch (rows.TypeAt(row, column)) {
    case Kind::Empty:
    case Kind::Null:
      return std::nullopt;
    case Kind::String:
      return HashOf(rows.TextAt(row, column));
    case Kind::Date:
      return HashOf(rows.Value(row, column).As<automation::Date>());
    default:
      return HashOf(automation::ToDouble(rows.Value(row, column)));
  }
}

// A cell may equal a literal as a text, as a number or as a date.
using Hashes = std::array<std::optional<std::size_t>, 3>;

Hashes HashesOf(const Literal& literal) {
  Hashes hashes{HashOf(std::string_view(literal.text)), std::nullopt, std::nullopt};
  if (literal.number) hashes[1] = HashOf(*literal.number);
  if (literal.date) hashes[2] = HashOf(*literal.date);
  return hashes;
}

}  // namespace

ColumnIndex::ColumnIndex(const RowSet& rows, std::size_t column) {
  entries_.reserve(rows.RowCount());
  for (std::size_t row = 0; row < rows.RowCount(); ++row) {
    if (const auto hash = HashOfCell(rows, row, column)) entries_.push_back({*hash, row});
  }
  std::sort(entries_.begin(), entries_.end());
}

std::span<const ColumnIndex::Entry> ColumnIndex::EntriesWith(std::size_t hash) const {
  const auto less = [](const Entry& entry, std::size_t wanted) { return entry.hash < wanted; };
  const auto greater = [](std::size_t wanted, const Entry& entry) { return wanted < entry.hash; };
  const auto first = std::lower_bound(entries_.begin(), entries_.end(), hash, less);
  return {first, std::upper_bound(first, entries_.end(), hash, greater)};
}

std::size_t ColumnIndex::CountCandidates(const Literal& literal) const {
  std::size_t count = touched_.size();
  for (const auto& hash : HashesOf(literal)) {
    if (hash) count += EntriesWith(*hash).size();
  }
  return count;
}

std::vector<std::size_t> ColumnIndex::Candidates(const Literal& literal) const {
  std::vector<std::size_t> rows(touched_);
  for (const auto& hash : HashesOf(literal)) {
    if (!hash) continue;
    for (const Entry& entry : EntriesWith(*hash)) rows.push_back(entry.row);
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

}  // namespace talvex::platform::database
