#include "exchange/workbook_xml.h"

#include <charconv>
#include <string_view>

#include "automation/conversions.h"
#include "automation/text.h"

namespace talvex {

using platform::spreadsheet::Cell;
using platform::spreadsheet::Position;
using platform::spreadsheet::Property;
using platform::spreadsheet::Workbook;
using platform::spreadsheet::Worksheet;

namespace {

// The document properties that become elements.
struct KnownProperty {
  std::string_view name;
  std::string_view element;
};
constexpr KnownProperty kProperties[] = {
    {"B2B-DOCTYPE-ID", "DOCTYPE-ID"}, {"B2B-SENDER", "SENDER"},
    {"B2B-CONTACT", "CONTACT"},       {"B2B-SHOW", "SHOW"},
    {"B2B-RECEIVER", "RECEIVER"},     {"B2B-BUSINESSPARTNER", "BUSINESSPARTNER"},
    {"B2B-BUS-PART-C", "BUS-PART-C"}, {"B2B-BUS-PART-S", "BUS-PART-S"},
};
// The one that is there or not.
constexpr KnownProperty kDistributionList{"B2B-USESDISTLIST", "USESDISTLIST"};

// Line breaks are written as references, since a reader makes others of them.
void AppendText(std::string& xml, std::string_view text) {
  for (std::size_t at = text.find_first_of("&<>\"\r\n\t"); at != std::string_view::npos;
       at = text.find_first_of("&<>\"\r\n\t")) {
    xml.append(text.substr(0, at));
    switch (text[at]) {
      case '&':
        xml.append("&amp;");
        break;
      case '<':
        xml.append("&lt;");
        break;
      case '>':
        xml.append("&gt;");
        break;
      case '"':
        xml.append("&quot;");
        break;
      default:
        xml.append("&#").append(std::to_string(text[at])).append(";");
    }
    text.remove_prefix(at + 1);
  }
  xml.append(text);
}

void AppendNumber(std::string& xml, std::int32_t number) {
  char digits[16];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), number);
  xml.append(std::begin(digits), end.ptr);
}

void AppendAttribute(std::string& xml, std::string_view name, std::string_view value) {
  xml.append(" ").append(name).append("=\"");
  AppendText(xml, value);
  xml.append("\"");
}

void AppendPieces(std::string& xml, std::string_view element, std::string_view value) {
  while (!value.empty()) {
    const std::size_t end = value.find(';');
    xml.append("<").append(element).append(">");
    AppendText(xml, value.substr(0, end));
    xml.append("</").append(element).append(">");
    if (end == std::string_view::npos) return;
    value.remove_prefix(end + 1);
    // What stands behind the last separator is a piece, too.
    if (value.empty()) xml.append("<").append(element).append("/>");
  }
}

void AppendProperty(std::string& xml, const Property& property) {
  const std::string value = automation::ToText(property.value);
  if (automation::SameFolded(property.name, kDistributionList.name) && value == "1") {
    xml.append("<").append(kDistributionList.element).append("/>");
  }
  for (const auto& [name, element] : kProperties) {
    if (automation::SameFolded(property.name, name)) AppendPieces(xml, element, value);
  }
}

void AppendCell(std::string& xml, Position at, const Cell& cell) {
  const std::string text = automation::ToText(cell.value);
  if (automation::Trimmed(text).empty()) return;
  xml.append("<Cell Row=\"");
  AppendNumber(xml, at.row);
  xml.append("\" Column=\"");
  AppendNumber(xml, at.column);
  xml.append("\"");
  if (!cell.formula.empty()) AppendAttribute(xml, "Formula", cell.formula);
  xml.append(">");
  AppendText(xml, text);
  xml.append("</Cell>");
}

void AppendSheet(std::string& xml, const Worksheet& sheet) {
  constexpr std::size_t kTypicalCell = 48;
  xml.reserve(xml.size() + sheet.UsedCells().Count() * kTypicalCell);
  xml.append("<WorkSheet");
  AppendAttribute(xml, "Name", sheet.Name());
  xml.append(">");
  for (const auto& [row, cells] : sheet.UsedCells().ByRow()) {
    for (const auto& [column, cell] : cells) AppendCell(xml, {row, column}, cell);
  }
  xml.append("</WorkSheet>");
}

}  // namespace

std::string WorkbookXml(Workbook& book) {
  const std::string name = book.Name();
  std::string xml = "<B2BEXCEL";
  AppendAttribute(xml, "WorkBook", name.starts_with('~') ? name.substr(1) : name);
  xml.append(">");
  for (const auto& property : book.Properties()) AppendProperty(xml, property);
  for (std::int32_t index = 1; index <= book.SheetCount(); ++index) AppendSheet(xml, *book.Sheet(index));
  return xml.append("</B2BEXCEL>");
}

}  // namespace talvex
