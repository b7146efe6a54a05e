#include "exchange/block_layout.h"

#include <algorithm>
#include <optional>

#include "exchange/cell_address.h"
#include "exchange/failure.h"
#include "exchange/record_search.h"

namespace talvex {

using markup::Block;
using markup::Field;
using platform::spreadsheet::kLastRow;
using platform::spreadsheet::Position;

// The records end before the first of which no cell holds anything.
std::int32_t TargetSheet::CountThere(const Block& block) const {
  const auto& cells = sheet_->UsedCells();
  const auto is_there = [&](std::int32_t record) {
    return std::any_of(block.fields.begin(), block.fields.end(), [&](const Field& field) {
      if (!field.value || IsFormula(field.value->type) || field.value->temporary) return false;
      const Position at = field.value->at;
      return cells.Find({at.row + record * block.rows, at.column}) != nullptr;
    });
  };
  std::int32_t there = 0;
  while (block.first.row + there * block.rows <= kLastRow && is_there(there)) ++there;
  return there;
}

void TargetSheet::Plan(const Block& block, EWriteMode mode) {
  BlockPlan& plan = plans_[&block];
  if (mode != EWriteMode::Create) plan.there = CountThere(block);
  std::optional<RecordSearch> search;
  if (mode == EWriteMode::Update) search.emplace(block, *sheet_, plan.there);
  const markup::RecordReader reader(block);
  for (const auto& record : block.records) {
    const auto found = search ? search->Find(reader.Read(*record)) : std::vector<std::int32_t>();
    for (const std::int32_t place : found) plan.targets.push_back({record.get(), place, true});
    if (found.empty()) plan.targets.push_back({record.get(), plan.there + plan.added++, false});
  }
  // Said before any work is done; the rows below may be pushed off the sheet all the same.
  const std::int64_t records = std::max(plan.there + plan.added, 1);
  OnSheet(block.first.row + records * block.rows - 1, block.first.column);
}

void TargetSheet::MakeRoom() {
  std::vector<std::pair<const Block*, const BlockPlan*>> downwards;
  for (const auto& [block, plan] : plans_) downwards.emplace_back(block, &plan);
  std::sort(downwards.begin(), downwards.end(),
            [](const auto& a, const auto& b) { return a.first->first.row < b.first->first.row; });
  std::int32_t free = 1;
  for (const auto& [block, plan] : downwards) {
    if (block->first.row < free) throw Failure(failure_label::kPosition, "Two blocks share rows of a sheet");
    free = block->first.row + std::max(plan->there, 1) * block->rows;
  }
  // From below, so that the rows of the blocks above are still where the markup says.
  Labelled(failure_label::kPosition, [&] {
    std::for_each(downwards.rbegin(), downwards.rend(),
                  [&](const auto& planned) { Insert(*planned.first, *planned.second); });
  });
}

void TargetSheet::Insert(const Block& block, const BlockPlan& plan) {
  // The first record of all goes to rows that are there.
  const std::int32_t records = plan.there == 0 ? plan.added - 1 : plan.added;
  if (records <= 0) return;
  const std::int32_t before = block.first.row + std::max(plan.there, 1) * block.rows;
  const std::int32_t count = records * block.rows;
  sheet_->InsertRows(before, count);
  insertions_.push_back({before, count});
  const bool contents = HasOwnContent(block);
  const auto copy = [&](std::int32_t row, std::int32_t rows, std::int32_t target) {
    contents ? sheet_->CopyRows(row, rows, target) : sheet_->CopyRowStyles(row, rows, target);
  };
  // What is copied doubles each time: one copy for each record would be slow.
  copy(block.first.row, block.rows, before);
  for (std::int32_t done = block.rows; done < count;) {
    const std::int32_t next = std::min(done, count - done);
    copy(before, next, before + done);
    done += next;
  }
}

// Whether the first record's rows hold anything that no field is going to replace.
bool TargetSheet::HasOwnContent(const Block& block) const {
  const auto is_replaced = [&](Position at) {
    return std::any_of(block.fields.begin(), block.fields.end(),
                       [&](const Field& field) { return field.value && field.value->at == at; });
  };
  const auto& rows = sheet_->UsedCells().ByRow();
  const auto end = rows.lower_bound(block.first.row + block.rows);
  return std::any_of(rows.lower_bound(block.first.row), end, [&](const auto& row) {
    return !std::all_of(row.second.begin(), row.second.end(), [&](const auto& cell) {
      return is_replaced({row.first, cell.column});
    });
  });
}

Position TargetSheet::Moved(Position at) const {
  Position moved = at;
  for (const Insertion& insertion : insertions_) {
    if (insertion.before <= at.row) moved.row += insertion.count;
  }
  return moved;
}

}  // namespace talvex
