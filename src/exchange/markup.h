// Workbook markup as it is read from XML: what is to be written where. docs/workbook-markup.md describes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "platform/spreadsheet/content.h"
#include "platform/xml/xml_document.h"
#include "types/exchange_types.h"

namespace talvex::markup {

using platform::spreadsheet::Position;

TALVEX_ENUM(ValueType, std::int32_t, Text = 1, Number = 2, Date = 3, Boolean = 4, Formula = 5, Result = 6);

[[nodiscard]] constexpr bool IsFormula(ValueType type) {
  return type == ValueType::Formula || type == ValueType::Result;
}

// All positions are those of the workbook as it was opened.
struct Label {
  std::string text;  // With placeholders.
  Position at;
};

struct Value {
  Position at;
  ValueType type = ValueType::Text;
  std::optional<std::string> pattern;  // The text to write, with placeholders; otherwise it is the data.
  bool temporary = false;
};

// A value, a label, or both.
struct Item {
  std::optional<Label> label;
  std::optional<Value> value;
  std::string data;  // The element's own text.
};

struct Field {
  std::string name;
  std::optional<Label> label;
  std::optional<Value> value;
  std::optional<EExcelSearchOptions> search;
};

// A record is read from its element when it is written: a block can have very many.
struct Block {
  Position first;
  std::int32_t rows = 1;
  EExcelIndexMode mode = EExcelIndexMode::Sequence;
  std::vector<Field> fields;
  std::vector<platform::xml::XmlNodeRef> records;

  [[nodiscard]] bool Contains(Position at) const { return at.row >= first.row && at.row < first.row + rows; }
};

struct Part {
  std::string sheet;
  std::variant<Item, Block> what;
};

// A document property or the original file's name.
struct DocumentProperty {
  std::string name;
  std::string value;
  std::string type;
};

// The parts in the order of the document. A marker that is misplaced or misspelt is a Failure.
[[nodiscard]] std::vector<Part> ReadParts(const platform::xml::XmlDocument& document);

[[nodiscard]] std::vector<DocumentProperty> ReadProperties(platform::xml::XmlDocument& document);

// The texts of a record, one for each field of the block; none where the record lacks the element. An element
// that no field names is a Failure.
class RecordReader {
 public:
  explicit RecordReader(const Block& block);
  [[nodiscard]] std::vector<std::optional<std::string>> Read(const platform::xml::XmlNode& record) const;

 private:
  std::unordered_map<std::string, std::size_t> by_name_;
  std::size_t count_;
};

// The first cell of a record that stands where it says itself.
[[nodiscard]] Position PlaceOf(const platform::xml::XmlNode& record);

}  // namespace talvex::markup
