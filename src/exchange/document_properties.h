// Custom document properties of workbooks.
#pragma once

#include <string>

#include "platform/spreadsheet/workbook.h"

namespace talvex {

// Adds the property, or replaces the one of that name in any case, as BudgetExcel::SetCustomerPropertyInExcel
// describes it. A value that does not fit its type raises 13; other failures are the workbook's.
void SetDocumentProperty(platform::spreadsheet::Workbook& book, const std::string& name,
                         const automation::Variant& value, const std::string& type);

}  // namespace talvex
