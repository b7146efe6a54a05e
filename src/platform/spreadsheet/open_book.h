// What a workbook and its sheets share while it is open. For this folder only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/spreadsheet/content.h"

namespace talvex::platform::spreadsheet {

inline constexpr std::string_view kSource = "Talvex.Platform.Spreadsheet";

struct OpenBook {
  bool open = true;
  Content content;
  std::vector<Edit> edits;  // Made since the base was read.

  // Raises 3704 when the workbook has been closed.
  void RequireOpen() const;

  // The sheet's number from 0; names compare without case.
  [[nodiscard]] std::optional<std::size_t> FindSheet(std::string_view name) const;
  // Raises 5 for a name that no sheet may have, or that another one than `own` has.
  void RequireFreeSheetName(const std::string& name, std::optional<std::size_t> own) const;

  // Notes that a cell of the sheet was set. Cells set one after another are one edit, as long as nothing else
  // comes in between.
  void NoteCell(const std::string& sheet, Position at, const Cell& cell);
};

}  // namespace talvex::platform::spreadsheet
