// How cells travel between talvex-sheet and the adapter that starts it.
//
// One CBOR map of columns, so that 100,000 cells stay small and quick:
//   "at"        of every cell (row - 1) * 256 + (column - 1), rising
//   "values"    of every cell null, a Boolean, a number or a text
//   "dates"     which of them, counted from 0, are dates: their number is seconds since 1 January 1970
//   "formulas"  [which cell, its formula with the "="] for those that have one
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>

namespace talvex::adapters::spreadsheet::message {

inline constexpr std::int32_t kRows = 65536;
inline constexpr std::int32_t kColumns = 256;

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
  void Add(Cell cell);
  [[nodiscard]] nlohmann::json Take();

 private:
  nlohmann::json::array_t at_, values_, dates_, formulas_;
};

// Calls `each` for every cell, in their order. Raises std::runtime_error, or what the library raises, for a
// map of any other layout, a place outside a sheet, or places that do not rise.
void ReadCells(const nlohmann::json& cells, const std::function<void(Cell&&)>& each);

// One value alone, for document properties: [kind, value] with the kinds "text", "number", "date", "boolean".
[[nodiscard]] nlohmann::json WriteValue(const Value& value);
[[nodiscard]] Value ReadValue(const nlohmann::json& value);

}  // namespace talvex::adapters::spreadsheet::message
