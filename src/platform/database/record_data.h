// What a record set and its clones share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "automation/variant.h"
#include "platform/database/column_index.h"
#include "platform/database/filter.h"
#include "platform/database/row_set.h"
#include "platform/database/update_target.h"

namespace talvex::platform::database {

// A value for every column of a row; nothing where none was set.
using ColumnValues = std::vector<std::optional<automation::Variant>>;

// A change of one row, ready to be written.
struct RowChange {
  struct Column {
    std::size_t column = 0;
    automation::Variant before;  // Exactly as stored; Empty when only the database knows it.
    automation::Variant after;
  };
  bool added = false;
  std::vector<Column> columns;  // Those that were set and, in a row that was there, differ from before.
  std::vector<automation::Variant>
      keys;  // Of a row that was there: its key before the change, as the target orders it.

  [[nodiscard]] bool ChangesNothing() const noexcept { return !added && columns.empty(); }
};

// The rows of a query, the changes to them that are kept until they are written, and where they are written
// to. Rows are numbered in the order of the result, added ones after them; a row that was taken back keeps
// its number and is hidden.
//
// A column of an added row that was not set holds Empty, since the database may have given it a value of its
// own.
class RecordData {
 public:
  // `complete` says whether the rows are the whole result, or a first block of it.
  RecordData(RowSet rows, bool complete, UpdateTarget target);

  [[nodiscard]] const RowSet& Rows() const noexcept { return rows_; }
  [[nodiscard]] const UpdateTarget& Target() const noexcept { return target_; }
  // A cell as its readers see it: Null where it is Empty.
  [[nodiscard]] automation::Variant Value(std::size_t row, std::size_t column) const;
  [[nodiscard]] bool IsShown(std::size_t row) const { return hidden_.empty() || !hidden_.contains(row); }
  [[nodiscard]] std::size_t ShownCount() const { return rows_.RowCount() - hidden_.size(); }

  [[nodiscard]] bool IsComplete() const noexcept { return complete_; }
  // The number of rows that were read, before any that were added.
  [[nodiscard]] std::size_t BlockSize() const noexcept { return block_size_; }
  // Takes the rows that are not here yet out of the whole result, behind the first block. Rows that are here
  // stay as they were read, with their changes; they are recognised by their keys. Returns by how much the
  // numbers of added rows have grown. Raises 51 for a result with other columns.
  std::size_t Complete(const RowSet& whole);

  // The change that setting these values in a row, or adding a row with them, makes, together with what is
  // kept for it.
  [[nodiscard]] RowChange ChangeOf(std::optional<std::size_t> row, const ColumnValues& values) const;

  // Sets values in a row, or adds a row with them, and returns its number: Keep for changes still to be
  // written, which can be taken back, Store for written ones.
  std::size_t Keep(std::optional<std::size_t> row, const ColumnValues& values);
  std::size_t Store(std::optional<std::size_t> row, const ColumnValues& values,
                    std::optional<std::int64_t> identity);

  [[nodiscard]] bool HasKept() const noexcept { return !kept_.empty(); }
  [[nodiscard]] std::vector<std::size_t> KeptRows() const;
  // The kept change of a row has been written, or is taken back.
  void Settle(std::size_t row, std::optional<std::int64_t> identity);
  void TakeBack(std::size_t row);
  // The value as it was read or last written; Null in an added row.
  [[nodiscard]] automation::Variant OriginalValue(std::size_t row, std::size_t column) const;

  // The rows that pass the filter, in order.
  [[nodiscard]] std::vector<std::size_t> RowsThatPass(const Filter& filter);

 private:
  // What a kept change replaced.
  struct Kept {
    bool added = false;
    std::vector<std::optional<StoredValue>> before;  // Has something for every column that was set.
  };

  [[nodiscard]] const Kept* FindKept(std::optional<std::size_t> row) const;
  [[nodiscard]] StoredValue Before(std::size_t row, std::size_t column) const;
  [[nodiscard]] std::vector<automation::Variant> KeysBefore(std::size_t row) const;
  std::size_t AddRow(const ColumnValues& values);
  void SetCell(std::size_t row, std::size_t column, const StoredValue& stored);
  void MoveAddedRows(std::size_t by);
  [[nodiscard]] ColumnIndex& IndexOf(std::size_t column);
  [[nodiscard]] std::optional<std::vector<std::size_t>> Candidates(const Filter& filter);

  RowSet rows_;
  bool complete_;
  std::size_t block_size_;
  UpdateTarget target_;
  std::map<std::size_t, Kept> kept_;
  std::set<std::size_t> hidden_;
  std::map<std::size_t, ColumnIndex> indexes_;  // By column.
};

}  // namespace talvex::platform::database
