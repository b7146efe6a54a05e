// Finds rows by the value of a column.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "platform/database/filter_condition.h"
#include "platform/database/row_set.h"

namespace talvex::platform::database {

// Which rows may have a value equal to a literal in one column, as a filter compares them. It answers with
// some rows too many rather than one too few: the filter looks at them again. So rows that were changed or
// added after it was built need not be sorted in; they are answers to every question until there are so many
// that it is built anew.
class ColumnIndex {
 public:
  ColumnIndex(const RowSet& rows, std::size_t column);

  // To be told of every row whose cell in this column was set, and of every row added, since it was built.
  void Touch(std::size_t row) { touched_.push_back(row); }
  [[nodiscard]] bool Worn() const noexcept { return touched_.size() > 64 + entries_.size() / 16; }

  // How many rows Candidates would give, at most.
  [[nodiscard]] std::size_t CountCandidates(const Literal& literal) const;
  // The rows, in ascending order, each once.
  [[nodiscard]] std::vector<std::size_t> Candidates(const Literal& literal) const;

 private:
  // Two numbers a row and nothing else, in order of the hash, so that an index costs 16 bytes a row.
  struct Entry {
    std::size_t hash;
    std::size_t row;
    // NOLINTNEXTLINE(modernize-use-nullptr): the 0 that a comparison is held against is no pointer.
    friend auto operator<=>(const Entry&, const Entry&) = default;
  };
  [[nodiscard]] std::span<const Entry> EntriesWith(std::size_t hash) const;

  std::vector<Entry> entries_;
  std::vector<std::size_t> touched_;
};

}  // namespace talvex::platform::database
