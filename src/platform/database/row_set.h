// The rows of a result, held compactly in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace talvex::platform::database {

// A value as callers see it, and what they do not see of a moment: its fraction of a second, in nanoseconds.
struct StoredValue {
  automation::Variant value;
  std::uint32_t fraction = 0;

  // The value for a condition that finds what is stored: a moment with a fraction as the text
  // "YYYY-MM-DDTHH:MM:SS.fff" with as many digits as it takes, which every server reads as what its column
  // is, where a parameter of another type for moments could be rounded otherwise.
  [[nodiscard]] automation::Variant Exact() const;
};

// Rows and columns of values. A cell takes 16 bytes; texts stand one after another in shared blocks, so that
// a listing of a hundred thousand budgets costs little more than its texts.
class RowSet {
 public:
  RowSet() = default;
  explicit RowSet(std::vector<std::string> columns) : columns_(std::move(columns)) {}

  [[nodiscard]] const std::vector<std::string>& Columns() const noexcept { return columns_; }
  // The position of a column, its name compared without case; nothing when there is none.
  [[nodiscard]] std::optional<std::size_t> Find(std::string_view column) const noexcept;
  [[nodiscard]] std::size_t RowCount() const noexcept;

  // Filling, cell after cell and row after row. A value of a kind that no table holds (an array, an object, a
  // number that is not finite) raises -2147217887.
  void Append(automation::NullValue);
  void Append(std::int32_t value);
  void Append(double value);
  // `fraction` is that of the second, in nanoseconds: readers do not see it, conditions do.
  void Append(automation::Date value, std::uint32_t fraction = 0);
  void Append(std::string_view text);
  void Append(const automation::Variant& value) { Add(MakeCell(value)); }
  // Adds a whole row of another set, which has as many columns.
  void AppendRow(const RowSet& from, std::size_t row);

  [[nodiscard]] automation::Variant Value(std::size_t row, std::size_t column) const;
  [[nodiscard]] StoredValue Stored(std::size_t row, std::size_t column) const;
  void Set(std::size_t row, std::size_t column, const automation::Variant& value) {
    Set(row, column, StoredValue{value});
  }
  void Set(std::size_t row, std::size_t column, const StoredValue& stored);

  // The kind of a cell, and its content without a copy when it is a text (else the empty view).
  [[nodiscard]] automation::Kind TypeAt(std::size_t row, std::size_t column) const noexcept;
  [[nodiscard]] std::string_view TextAt(std::size_t row, std::size_t column) const noexcept;

  // Removes the last row.
  void RemoveLastRow();

 private:
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): a union is initialised by one of its members.
  struct Cell {
    automation::Kind kind = automation::Kind::Empty;
    std::uint32_t length = 0;  // Of a text; of a moment the fraction.
    union {
      std::int64_t whole = 0;
      double number;
      const char* text;
    };
  };
  static_assert(sizeof(Cell) == 16);

  [[nodiscard]] Cell MakeCell(const automation::Variant& value);
  [[nodiscard]] Cell MakeTextCell(std::string_view text);
  void Add(Cell cell);
  [[nodiscard]] const Cell& At(std::size_t row, std::size_t column) const noexcept {
    return pages_[row / kRowsPerPage][row % kRowsPerPage * columns_.size() + column];
  }

  static constexpr std::size_t kRowsPerPage = 1024;

  std::vector<std::string> columns_;
  // In pages, since one growing array would hold all cells twice whenever it moves.
  std::vector<std::vector<Cell>> pages_;
  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t block_size_ = 0;
  std::size_t block_used_ = 0;
};

}  // namespace talvex::platform::database
