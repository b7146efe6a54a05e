// Addresses of cells as markup gives them.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/spreadsheet/content.h"

namespace talvex {

// Whole rows of a sheet, and the cell that they were named by.
struct BlockArea {
  platform::spreadsheet::Position first;
  std::int32_t rows = 1;
};

// The place that an address such as "B7", "b7" or "$B$7" names. Anything else, and a place off the sheet, is
// a Failure (SLBBU0348).
[[nodiscard]] platform::spreadsheet::Position ReadAddress(std::string_view text);

// An address ("A5": one row) or a range ("A5:D7": the rows 5 to 7); otherwise as ReadAddress.
[[nodiscard]] BlockArea ReadBlockArea(std::string_view text);

// The place itself when it is on a sheet; otherwise a Failure (SLBBU0348).
platform::spreadsheet::Position OnSheet(std::int64_t row, std::int64_t column);

}  // namespace talvex
