// An open workbook.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/class_info.h"
#include "platform/spreadsheet/content.h"
#include "platform/spreadsheet/engine.h"
#include "platform/spreadsheet/worksheet.h"

namespace talvex::platform::spreadsheet {

// The types of a document property, as callers number them.
enum class PropertyType : std::int32_t { None = 0, Text = 10, Number = 20, Date = 30, Boolean = 40 };

// A workbook in memory, read whole when it is opened. Changes reach a file when it is saved; the file that it
// was read from must then still be the same. Closing without saving drops them.
class Workbook final : public automation::Object {
  TALVEX_CLASS(Workbook, "Platform.Workbook", "An open workbook; changes reach a file when it is saved.");

 public:
  // Reads the workbook with the calling thread's environment. A new one has no file of its own before SaveAs.
  // Raises what Engine::Read raises, and 429 when there is no engine.
  [[nodiscard]] static std::shared_ptr<Workbook> Open(const std::string& path);
  [[nodiscard]] static std::shared_ptr<Workbook> FromTemplate(const std::string& template_path);

  Workbook(std::string base, bool own_file);
  ~Workbook() override;

  TALVEX_READONLY(std::string, Name, "Name",
                  "The file's name without its folder; a new workbook's template's.");
  TALVEX_READONLY(std::string, Path, "Path", "The file's path; empty before a new workbook is saved.");
  TALVEX_READONLY(bool, Changed, "Changed", "Whether there are changes that were not saved.");

  TALVEX_READONLY(std::int32_t, SheetCount, "SheetCount", "The number of sheets.");
  TALVEX_METHOD(
      std::shared_ptr<Worksheet>, Sheet, (const automation::Variant& index),
      "The sheet of that name (a text, in any case) or at that position (a number from 1); 9 when there "
      "is none.");
  TALVEX_METHOD(bool, HasSheet, (const std::string& name),
                "Whether there is a sheet of that name, in any case.");
  TALVEX_METHOD(std::shared_ptr<Worksheet>, AddSheet, (const std::string& name),
                "Adds an empty sheet at the end; 5 for a name that is taken or cannot be one.");

  TALVEX_READONLY(std::int32_t, PropertyCount, "PropertyCount", "The number of custom document properties.");
  TALVEX_METHOD(std::string, PropertyName, (std::int32_t position),
                "The name of the property at that position from 1; 9 when there is none.");
  TALVEX_METHOD(automation::Variant, Property, (const std::string& name),
                "The value of the property of that name, in any case; Empty when there is none.");
  TALVEX_METHOD(
      std::int32_t, PropertyTypeOf, (const std::string& name),
      "The type of the property of that name, in any case: text 10, number 20, date 30, Boolean 40; 0 "
      "when there is none.");
  TALVEX_METHOD(
      void, SetProperty, (const std::string& name, const automation::Variant& value),
      "Adds a property or replaces the one of that name, in any case; its type is the value's, and it "
      "is linked to no cell.");

  TALVEX_METHOD(
      void, Calculate, (),
      "Calculates every formula, so that its value in memory is that of the cells as they are now; no "
      "file is written. Does nothing when there are no changes. Raises 5 for a formula that cannot be "
      "read, and 75 when the file was changed meanwhile.");
  TALVEX_METHOD(
      void, Save, (),
      "Writes the changes to the workbook's own file; does nothing when there is none. Raises 75 when "
      "it has no file, or when the file was changed meanwhile.");
  TALVEX_METHOD(
      void, SaveAs, (const std::string& path, std::optional<bool> replace),
      "Writes the workbook to another file, which is its own from then on. A name that is taken raises "
      "58 unless it is to be replaced. Without changes the file is copied as it is.");
  TALVEX_METHOD(void, Close, (),
                "Drops the workbook from memory, unsaved changes too. Closing again does nothing.");

  [[nodiscard]] const std::vector<spreadsheet::Property>& Properties() const;

 private:
  [[nodiscard]] std::string Rewritten();
  void Adopt(const std::string& path);

  std::shared_ptr<OpenBook> book_;
  std::shared_ptr<const Engine> engine_;
  std::string base_;                    // The file that the edits are to be made to.
  std::optional<std::string> version_;  // Of the base, when it was read.
  bool own_file_;                       // Whether the base is the workbook's own file.
};

// The program that holds workbooks, as scripts reach it.
class Application final : public automation::Object {
  TALVEX_CLASS(Application, "Platform.Spreadsheet", "Opens workbooks and makes new ones from templates.");

 public:
  TALVEX_METHOD(
      std::shared_ptr<Workbook>, Open, (const std::string& path),
      "Reads an .xls workbook. Raises 53 (no such file), 75 (a directory, or not to be read), 321 (no "
      "workbook: empty, of another kind, protected by a password, or damaged), 7 (too large).");
  TALVEX_METHOD(std::shared_ptr<Workbook>, FromTemplate, (const std::string& path),
                "A new workbook with the content of the template; errors as for Open.");
};

}  // namespace talvex::platform::spreadsheet
