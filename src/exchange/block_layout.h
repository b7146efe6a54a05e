// Room for the records of blocks: which rows are theirs, and where everything else goes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "exchange/markup.h"
#include "platform/spreadsheet/workbook.h"

namespace talvex {

// Where a record is written: the rows are counted in records, from 0.
struct Target {
  const platform::xml::XmlNode* record;
  std::int32_t place;
  bool found;  // One that was there is replaced.
};

// A sheet that the markup writes to, and where its rows end up.
class TargetSheet {
 public:
  explicit TargetSheet(std::shared_ptr<platform::spreadsheet::Worksheet> sheet) : sheet_(std::move(sheet)) {}

  // Plans the records of a block whose records follow one another. Nothing is changed yet.
  void Plan(const markup::Block& block, EWriteMode mode);

  // Inserts the rows that were planned. Two blocks that share rows, and rows that would be pushed off the
  // sheet, are a Failure (SLBBU0348).
  void MakeRoom();

  // Where a place of the workbook as it was opened is now.
  [[nodiscard]] platform::spreadsheet::Position Moved(platform::spreadsheet::Position at) const;

  [[nodiscard]] const std::vector<Target>& TargetsOf(const markup::Block& block) const {
    return plans_.at(&block).targets;
  }
  [[nodiscard]] platform::spreadsheet::Worksheet& Sheet() const noexcept { return *sheet_; }

 private:
  struct BlockPlan {
    std::int32_t there = 0;  // Records that the sheet has already.
    std::int32_t added = 0;
    std::vector<Target> targets;
  };
  struct Insertion {
    std::int32_t before;  // A row of the workbook as it was opened.
    std::int32_t count;
  };

  [[nodiscard]] std::int32_t CountThere(const markup::Block& block) const;
  void Insert(const markup::Block& block, const BlockPlan& plan);
  [[nodiscard]] bool HasOwnContent(const markup::Block& block) const;

  std::shared_ptr<platform::spreadsheet::Worksheet> sheet_;
  std::map<const markup::Block*, BlockPlan> plans_;
  std::vector<Insertion> insertions_;
};

}  // namespace talvex
