// One sheet of an open workbook.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "automation/class_info.h"
#include "platform/spreadsheet/content.h"

namespace talvex::platform::spreadsheet {

struct OpenBook;

// Rows and columns count from 1. A row beyond 65,536 or a column beyond 256 raises 9, and every member raises
// 3704 when the workbook has been closed. Changes stay in memory until the workbook is saved.
class Worksheet final : public automation::Object {
  TALVEX_CLASS(Worksheet, "Platform.Worksheet",
               "A sheet of a workbook. Rows and columns count from 1; one beyond 65,536 rows or 256 columns "
               "raises 9.");

 public:
  Worksheet(std::shared_ptr<OpenBook> book, std::size_t index);
  ~Worksheet() override;

  TALVEX_ACCESSORS(std::string, Name, "Name",
                   "The sheet's name, up to 31 characters without []:*?/\\ and not another sheet's.");

  TALVEX_READONLY(std::int32_t, FirstRow, "FirstRow", "The first row of the used range; 1 when it is empty.");
  TALVEX_READONLY(std::int32_t, FirstColumn, "FirstColumn",
                  "The first column of the used range; 1 when it is empty.");
  TALVEX_READONLY(std::int32_t, RowCount, "RowCount", "The rows of the used range; 0 when it is empty.");
  TALVEX_READONLY(std::int32_t, ColumnCount, "ColumnCount",
                  "The columns of the used range; 0 when it is empty.");

  TALVEX_METHOD(automation::Variant, Value, (std::int32_t row, std::int32_t column),
                "The cell's value: Empty, a number, a Boolean, a date or a text; an error as its text. Of a "
                "formula, what was calculated when the workbook was read or saved last.");
  TALVEX_METHOD(
      void, SetValue, (std::int32_t row, std::int32_t column, const automation::Variant& value),
      "Puts a value into the cell, without a formula. A text stays the text that it is, also one that "
      "begins with \"=\"; Empty and Null clear the cell.");
  TALVEX_METHOD(bool, HasFormula, (std::int32_t row, std::int32_t column), "Whether the cell has a formula.");
  TALVEX_METHOD(
      std::string, Formula, (std::int32_t row, std::int32_t column),
      "The cell's formula with its \"=\", function names in capitals; empty for a cell without one. "
      "Of a cell that InsertRows or CopyRows moved, adjusted when the workbook is saved.");
  TALVEX_METHOD(void, SetFormula, (std::int32_t row, std::int32_t column, const std::string& formula),
                "Puts a formula into the cell, with or without the \"=\" before it; its value is calculated "
                "when the workbook is saved. Saving refuses a formula that cannot be read.");
  TALVEX_METHOD(void, Clear, (std::int32_t row, std::int32_t column), "Empties the cell; its format stays.");
  TALVEX_METHOD(std::string, Address, (std::int32_t row, std::int32_t column), "The cell's address: \"B7\".");
  TALVEX_METHOD(
      void, InsertRows, (std::int32_t row, std::int32_t count),
      "Puts empty rows before the row; what is there moves down. Raises 9 when cells would be pushed "
      "off the sheet.");
  TALVEX_METHOD(void, CopyRows, (std::int32_t row, std::int32_t count, std::int32_t target),
                "Copies rows over those from the target on: contents, formats, heights and merged cells.");
  TALVEX_METHOD(void, CopyRowStyles, (std::int32_t row, std::int32_t count, std::int32_t target),
                "As CopyRows, but leaves the contents of the target as they are.");

  // The cells that hold something, in their order, for walking over the used range without its gaps. Valid
  // until the workbook changes.
  [[nodiscard]] const Cells& UsedCells() const;

 private:
  [[nodiscard]] Sheet& Own() const;
  [[nodiscard]] const Cell* Find(std::int32_t row, std::int32_t column) const;
  void Put(Position at, Cell cell);
  void Copy(std::int32_t row, std::int32_t count, std::int32_t target, bool only_styles);

  std::shared_ptr<OpenBook> book_;
  std::size_t index_;
};

}  // namespace talvex::platform::spreadsheet
