#include "platform/spreadsheet/open_book.h"

#include "automation/error.h"
#include "automation/text.h"

namespace talvex::platform::spreadsheet {

namespace {

using automation::Error;
namespace number = automation::error_number;

constexpr std::size_t kLongestSheetName = 31;

}  // namespace

void OpenBook::RequireOpen() const {
  if (!open) throw Error(number::kObjectIsClosed, kSource, "The workbook is closed");
}

std::optional<std::size_t> OpenBook::FindSheet(std::string_view name) const {
  for (std::size_t index = 0; index < content.sheets.size(); ++index) {
    if (automation::SameFolded(content.sheets[index].name, name)) return index;
  }
  return std::nullopt;
}

void OpenBook::RequireFreeSheetName(const std::string& name, std::optional<std::size_t> own) const {
  const auto refuse = [&](std::string_view why) {
    throw Error(number::kInvalidCall, kSource, "No name for a sheet: \"" + name + "\" " + std::string(why));
  };
  if (name.empty()) refuse("is empty");
  if (!automation::IsUtf8(name) || name.find('\0') != std::string::npos) refuse("is no text");
  if (automation::CharacterCount(name) > kLongestSheetName) refuse("has more than 31 characters");
  if (name.find_first_of("[]:*?/\\") != std::string::npos) refuse("has one of the characters []:*?/\\");
  if (name.front() == '\'' || name.back() == '\'') refuse("begins or ends with an apostrophe");
  const auto taken = FindSheet(name);
  if (taken && taken != own) refuse("is another sheet's");
}

void OpenBook::NoteCell(const std::string& sheet, Position at, const Cell& cell) {
  // Setting cells of different sheets in turn makes one edit for each sheet: their order does not matter.
  for (auto last = edits.rbegin(); last != edits.rend(); ++last) {
    auto* cells = std::get_if<edit::SetCells>(&*last);
    if (cells == nullptr) break;
    if (cells->sheet != sheet) continue;
    cells->cells.Set(at, cell);
    return;
  }
  edits.emplace_back(edit::SetCells{sheet, {{at, cell}}});
}

}  // namespace talvex::platform::spreadsheet
