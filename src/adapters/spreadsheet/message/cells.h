// How cells travel between talvex-sheet and the adapter that starts it.
//
// One CBOR map of columns, packed so that 100,000 cells stay small and quick. Numbers are in the byte order
// of the machine, on which both programs run.
//   "at"       bytes: of every cell (row - 1) * 256 + (column - 1) in four bytes, rising
//   "kinds"    bytes: of every cell the index of its value's type in Value; plus kHasFormula with a formula
//   "numbers"  bytes: a double for every Boolean (0 or 1), number and date (seconds since 1 January 1970)
//   "texts"    bytes: of every cell its text and then its formula with the "=", as far as it has them; before
//              each its length in four bytes
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

namespace talvex::adapters::spreadsheet::message {

inline constexpr std::int32_t kRows = 65536;
inline constexpr std::int32_t kColumns = 256;
inline constexpr std::uint8_t kHasFormula = 16;

// A date with its time of day, without a zone.
struct Moment {
  std::int64_t seconds = 0;
};

using Value = std::variant<std::monostate, bool, double, Moment, std::string>;

struct Cell {
  std::int32_t row = 1;
  std::int32_t column = 1;
  Value value;
  std::string formula;  // Empty for a cell without one.
};

class CellWriter {
 public:
  // Cells come row by row, and within a row column by column.
  void Add(const Cell& cell);
  [[nodiscard]] nlohmann::json Take();

 private:
  using Bytes = std::vector<std::uint8_t>;

  Bytes at_, kinds_, numbers_, texts_;
};

// Calls `each` for every cell, in their order. Raises std::runtime_error, or what the library raises, for a
// map of any other layout, a place outside a sheet, or places that do not rise.
void ReadCells(const nlohmann::json& cells, const std::function<void(Cell&&)>& each);

// One value alone, for document properties: [kind, value] with the kinds "text", "number", "date", "boolean".
[[nodiscard]] nlohmann::json WriteValue(const Value& value);
[[nodiscard]] Value ReadValue(const nlohmann::json& value);

}  // namespace talvex::adapters::spreadsheet::message
