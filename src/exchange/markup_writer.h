// Workbook markup, written into a workbook.
#pragma once

#include <string>

#include "platform/spreadsheet/workbook.h"
#include "types/exchange_types.h"

namespace talvex {

// Changes the workbook as the markup says, in memory. Raises a Failure, and then the workbook is to be
// dropped.
void ApplyMarkup(const std::string& xml, EWriteMode mode, platform::spreadsheet::Workbook& book);

}  // namespace talvex
