#include "platform/spreadsheet/cells.h"

#include <algorithm>

namespace talvex::platform::spreadsheet {

namespace {

// Where the column is, or would be, in the row.
auto PlaceOf(auto& row, std::int32_t column) {
  return std::lower_bound(row.begin(), row.end(), column,
                          [](const auto& one, std::int32_t wanted) { return one.column < wanted; });
}

}  // namespace

Cells::Cells(std::initializer_list<std::pair<Position, Cell>> cells) {
  for (const auto& [at, cell] : cells) Set(at, cell);
}

std::size_t Cells::Count() const {
  std::size_t count = 0;
  for (const auto& [row, cells] : rows_) count += cells.size();
  return count;
}

const Cell* Cells::Find(Position at) const {
  const auto row = rows_.find(at.row);
  if (row == rows_.end()) return nullptr;
  const auto place = PlaceOf(row->second, at.column);
  return place != row->second.end() && place->column == at.column ? &place->cell : nullptr;
}

void Cells::Set(Position at, Cell cell) {
  const bool in_last = !rows_.empty() && rows_.rbegin()->first == at.row;
  Row& row = in_last ? rows_.rbegin()->second : rows_.try_emplace(rows_.end(), at.row)->second;
  const auto place = row.empty() || row.back().column < at.column ? row.end() : PlaceOf(row, at.column);
  if (place != row.end() && place->column == at.column) {
    place->cell = std::move(cell);
  } else {
    row.insert(place, {at.column, std::move(cell)});
  }
}

void Cells::Erase(Position at) {
  const auto row = rows_.find(at.row);
  if (row == rows_.end()) return;
  std::erase_if(row->second, [&](const InColumn& one) { return one.column == at.column; });
  if (row->second.empty()) rows_.erase(row);
}

void Cells::MoveDown(std::int32_t row, std::int32_t count) {
  Rows moved;
  for (auto below = rows_.lower_bound(row); below != rows_.end();) {
    auto node = rows_.extract(below++);
    node.key() += count;
    moved.insert(moved.end(), std::move(node));
  }
  rows_.merge(moved);
}

void Cells::CopyRows(std::int32_t row, std::int32_t count, std::int32_t target) {
  const auto range = [&](std::int32_t first) {
    return std::pair(rows_.lower_bound(first), rows_.lower_bound(first + count));
  };
  const auto [first, last] = range(row);
  Rows copied(first, last);
  const auto [first_old, last_old] = range(target);
  rows_.erase(first_old, last_old);
  for (auto& [number, cells] : copied) rows_.insert_or_assign(number - row + target, std::move(cells));
}

}  // namespace talvex::platform::spreadsheet
