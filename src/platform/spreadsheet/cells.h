// What the cells of a sheet hold, as plain data.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "automation/variant.h"

namespace talvex::platform::spreadsheet {

// A cell's place, counted from 1. Ordered row by row, and within a row column by column.
struct Position {
  std::int32_t row = 1;
  std::int32_t column = 1;
  friend auto operator<=>(const Position&, const Position&) = default;
};

// The value is Empty, a Double, a Boolean, a Date or a String; an error value is its text ("#DIV/0!"). Of a
// cell with a formula it is what the engine calculated last.
struct Cell {
  automation::Variant value;
  std::string formula;  // With the "=" before it; empty for a cell without one.
  friend bool operator==(const Cell&, const Cell&) = default;
};

// The cells that hold something. They are kept by rows: whole rows move, and a row has few cells.
class Cells {
 public:
  struct InColumn {
    std::int32_t column;
    Cell cell;
    friend bool operator==(const InColumn&, const InColumn&) = default;
  };
  using Row = std::vector<InColumn>;  // By rising columns, never empty.
  using Rows = std::map<std::int32_t, Row>;

  Cells() = default;
  Cells(std::initializer_list<std::pair<Position, Cell>> cells);

  // By rising rows.
  [[nodiscard]] const Rows& ByRow() const noexcept { return rows_; }
  [[nodiscard]] bool IsEmpty() const noexcept { return rows_.empty(); }
  [[nodiscard]] std::size_t Count() const;

  // Null for a cell that holds nothing. Valid until the cells change.
  [[nodiscard]] const Cell* Find(Position at) const;

  // Replaces what is there. Quickest behind the last cell.
  void Set(Position at, Cell cell);
  void Erase(Position at);

  // Moves the row and those below it down.
  void MoveDown(std::int32_t row, std::int32_t count);

  // Replaces the rows from `target` on by `count` rows from `row` on; the two ranges may overlap.
  void CopyRows(std::int32_t row, std::int32_t count, std::int32_t target);

  friend bool operator==(const Cells&, const Cells&) = default;

 private:
  Rows rows_;
};

}  // namespace talvex::platform::spreadsheet
