// Finding the records of a block that are in a workbook already.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exchange/markup.h"
#include "platform/spreadsheet/worksheet.h"

namespace talvex {

// The records are counted from 0, downwards. What is there is looked at once, when the search is made, so
// that many records are found quickly, and a record that is written later is not found.
class RecordSearch {
 public:
  // `there` records are in the sheet. A block without a field to search by is a Failure (SLBBU0347).
  RecordSearch(const markup::Block& block, const platform::spreadsheet::Worksheet& sheet, std::int32_t there);

  // The numbers of the records that have, in every field to search by, what the record of these texts asks
  // for.
  [[nodiscard]] std::vector<std::int32_t> Find(const std::vector<std::optional<std::string>>& texts) const;

 private:
  // What one field holds in one record.
  struct Held {
    automation::Variant value;
    std::int32_t record = 0;
  };
  using Range = std::pair<std::vector<Held>::const_iterator, std::vector<Held>::const_iterator>;

  struct Key {
    std::size_t field;
    markup::ValueType type;
    EExcelSearchOptions option;
    std::vector<automation::Variant> cells;  // By record.
  };

  [[nodiscard]] Range Candidates(const automation::Variant& wanted) const;

  std::vector<Key> keys_;
  std::vector<Held> sorted_;  // What the first key's field holds.
};

}  // namespace talvex
