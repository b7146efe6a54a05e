// The public enumerations and records of the exchange with workbooks.
#pragma once

#include <cstdint>

#include "automation/enumeration.h"
#include "automation/object.h"

namespace talvex {

// What becomes of the content that a workbook has already.
TALVEX_ENUM(EWriteMode, std::int32_t, Append = 10, Create = 20, Update = 30);

// How the cell that a record looks for compares with the record's value.
TALVEX_ENUM(EExcelSearchOptions, std::int32_t, GreaterThan = 10, LessThan = 20, Equals = 30);

// Whether the records of a block follow one another or stand where they say themselves.
TALVEX_ENUM(EExcelIndexMode, std::int32_t, Sequence = 10, Scattered = 20);

// The type of a document property.
TALVEX_ENUM(EMsoDocProperties, std::int32_t, EMsoPropertyTypeString = 10, EMsoPropertyTypeNumber = 20,
            EMsoPropertyTypeDate = 30, EMsoPropertyTypeBoolean = 40);

// An open workbook and the spreadsheet application that holds it.
struct TECollExcelObject {
  automation::ObjectRef oExcel;
  automation::ObjectRef oWorkBook;
};

}  // namespace talvex
