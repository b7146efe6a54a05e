// Opening the workbooks that BudgetExcel reads and writes.
#pragma once

#include <memory>
#include <string>

#include "platform/spreadsheet/workbook.h"
#include "types/exchange_types.h"

namespace talvex {

enum class WorkbookKind { Workbook, Template, Either };

// Opens a file with the extension "xls", or makes a new workbook of a template with the extension "XLT", in
// any case. Raises a Failure: another extension than is wanted or a file that is no workbook (SLBBU0345), a
// workbook (SLBBU0344) or a template (SLBBU0346) that cannot be opened for another reason.
[[nodiscard]] TECollExcelObject OpenWorkbook(const std::string& path, WorkbookKind wanted);

// The workbook of the record; none when there is none.
[[nodiscard]] std::shared_ptr<platform::spreadsheet::Workbook> WorkbookOf(const TECollExcelObject& excel);

}  // namespace talvex
