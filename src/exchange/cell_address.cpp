#include "exchange/cell_address.h"

#include <string>

#include "automation/text.h"
#include "exchange/failure.h"

namespace talvex {

using platform::spreadsheet::Position;

namespace {

constexpr bool IsLetter(char c) { return automation::FoldCase(c) >= 'a' && automation::FoldCase(c) <= 'z'; }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

[[noreturn]] void Refuse(const std::string& what) { throw Failure(failure_label::kPosition, what); }

[[noreturn]] void RefuseAddress(std::string_view text) {
  Refuse("\"" + std::string(text) + "\" is no address of a cell");
}

}  // namespace

Position OnSheet(std::int64_t row, std::int64_t column) {
  namespace book = platform::spreadsheet;
  if (row < 1 || row > book::kLastRow) Refuse("A sheet has no row " + std::to_string(row));
  if (column < 1 || column > book::kLastColumn) Refuse("A sheet has no column " + std::to_string(column));
  return {static_cast<std::int32_t>(row), static_cast<std::int32_t>(column)};
}

Position ReadAddress(std::string_view text) {
  const std::string plain = automation::Replaced(automation::Trimmed(text), "$", "");
  constexpr std::size_t kLongest = 12;  // Longer than any; keeps the numbers below from overflowing.
  if (plain.size() > kLongest) RefuseAddress(text);
  std::size_t at = 0;
  std::int64_t column = 0;
  std::int64_t row = 0;
  for (; at < plain.size() && IsLetter(plain[at]); ++at) {
    column = column * 26 + (automation::FoldCase(plain[at]) - 'a' + 1);
  }
  const std::size_t letters = at;
  for (; at < plain.size() && IsDigit(plain[at]); ++at) row = row * 10 + (plain[at] - '0');
  if (letters == 0 || at == letters || at < plain.size()) RefuseAddress(text);
  return OnSheet(row, column);
}

BlockArea ReadBlockArea(std::string_view text) {
  const std::size_t colon = text.find(':');
  const Position first = ReadAddress(text.substr(0, colon));
  if (colon == std::string_view::npos) return {first, 1};
  const Position last = ReadAddress(text.substr(colon + 1));
  if (last.row < first.row || last.column < first.column) {
    Refuse("The range \"" + std::string(text) + "\" ends before it begins");
  }
  return {first, last.row - first.row + 1};
}

}  // namespace talvex
