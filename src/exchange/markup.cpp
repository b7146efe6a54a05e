#include "exchange/markup.h"

#include <algorithm>
#include <map>

#include "exchange/cell_address.h"
#include "exchange/failure.h"

namespace talvex::markup {

using platform::xml::XmlDocument;
using platform::xml::XmlNode;
using platform::xml::XmlNodeRef;

namespace {

// Letter for letter as stylesheets write them.
namespace marker {
constexpr const char* kWorksheet = "B2BWORKSHEET";
constexpr const char* kBlock = "B2BBLOCK";
constexpr const char* kIndexMode = "B2BINDEXMODE";
constexpr const char* kSearchOption = "B2BSEARCHOPTION";
constexpr const char* kLabel = "B2BLABEL";
constexpr const char* kLabelPosition = "B2BLABELPOS";
constexpr const char* kValue = "B2BVALUE";
constexpr const char* kValuePosition = "B2BVALUEPOS";
constexpr const char* kValueType = "B2BVALUETYPE";
constexpr const char* kTemporaryValue = "B2BTEMPVALUE";
constexpr const char* kPropertyName = "B2BPROPLABEL";
constexpr const char* kPropertyType = "B2BPROPTYPE";
constexpr const char* kPropertyValue = "B2BPROPVALUE";
constexpr const char* kOriginalFileName = "B2BORIGINALFILENAME";
}  // namespace marker

constexpr const char* kOriginalName = "B2B-ORIGINALNAME";

[[noreturn]] void RefuseContent(const std::string& what) { throw Failure(failure_label::kWriting, what); }
[[noreturn]] void RefusePosition(const std::string& what) { throw Failure(failure_label::kPosition, what); }

// The attributes of an element.
class Marks {
 public:
  explicit Marks(const XmlNode& element) {
    for (const auto& attribute : element.Attributes()) texts_.emplace(attribute->Name(), attribute->Text());
  }
  [[nodiscard]] std::optional<std::string> Find(const char* name) const {
    const auto found = texts_.find(name);
    return found == texts_.end() ? std::nullopt : std::optional(found->second);
  }
  [[nodiscard]] bool Has(const char* name) const { return texts_.contains(name); }
  // Whether the element says anything of a cell.
  [[nodiscard]] bool MarkCell() const {
    return std::any_of(texts_.begin(), texts_.end(), [](const auto& mark) {
      return mark.first.starts_with(marker::kValue) || mark.first.starts_with(marker::kLabel) ||
             mark.first == marker::kTemporaryValue || mark.first == marker::kSearchOption;
    });
  }

 private:
  std::map<std::string, std::string> texts_;
};

// The member of that name, in any case, or of that number.
template <class E>
E ReadMember(const std::string& text) {
  for (const auto& [name, number] : DescribeEnumeration(E{}).Members()) {
    if (automation::SameFolded(name, text) || std::to_string(number) == text) return static_cast<E>(number);
  }
  RefuseContent("There is no " + DescribeEnumeration(E{}).Name() + " \"" + text + "\"");
}

ValueType ReadValueType(const std::string& text) {
  const auto number = DescribeEnumeration(ValueType{}).NumberOf(text);
  if (!number) RefuseContent("There is no type of value \"" + text + "\"");
  return static_cast<ValueType>(*number);
}

std::optional<Label> ReadLabel(const Marks& marks) {
  const auto text = marks.Find(marker::kLabel);
  const auto position = marks.Find(marker::kLabelPosition);
  if (!text && !position) return std::nullopt;
  if (!text || !position) RefusePosition("A label needs its text and its position");
  return Label{*text, ReadAddress(*position)};
}

std::optional<Value> ReadValue(const Marks& marks) {
  const auto text = marks.Find(marker::kValue);
  const auto temporary = marks.Find(marker::kTemporaryValue);
  const auto position = marks.Find(marker::kValuePosition);
  if (text && temporary) RefuseContent("A cell has one value, lasting or temporary");
  if (!position) {
    if (text || temporary || marks.Has(marker::kSearchOption)) RefusePosition("A value needs its position");
    return std::nullopt;
  }
  Value value{ReadAddress(*position), ValueType::Text, temporary ? temporary : text, temporary.has_value()};
  if (const auto type = marks.Find(marker::kValueType)) value.type = ReadValueType(*type);
  return value;
}

Item ReadItem(const XmlNode& element, const Marks& marks) {
  Item item{ReadLabel(marks), ReadValue(marks), {}};
  if (item.value) item.data = element.Text();
  return item;
}

Field ReadField(const XmlNode& element, const Marks& marks, const Block& block) {
  Field field{element.Name(), ReadLabel(marks), ReadValue(marks), std::nullopt};
  if (!field.value) return field;
  if (!block.Contains(field.value->at)) RefusePosition("The field " + field.name + " lies outside its block");
  if (const auto option = marks.Find(marker::kSearchOption)) {
    if (IsFormula(field.value->type) || field.value->pattern) {
      RefuseContent("The field " + field.name + " holds no data to search for");
    }
    field.search = ReadMember<EExcelSearchOptions>(*option);
  }
  return field;
}

Block ReadBlock(const XmlNode& element, const Marks& marks) {
  const BlockArea area = ReadBlockArea(*marks.Find(marker::kBlock));
  Block block{area.first, area.rows, EExcelIndexMode::Sequence, {}, {}};
  if (const auto mode = marks.Find(marker::kIndexMode)) block.mode = ReadMember<EExcelIndexMode>(*mode);
  for (auto& child : element.Children({})) {
    const Marks own(*child);
    if (own.MarkCell()) {
      block.fields.push_back(ReadField(*child, own, block));
    } else if (own.Has(marker::kBlock) != (block.mode == EExcelIndexMode::Scattered)) {
      RefusePosition("Records have a position of their own when they are scattered, and only then");
    } else {
      block.records.push_back(std::move(child));
    }
  }
  return block;
}

// The XPath of the elements that have the attribute. Few have one: going through the attributes that there
// are is several times as quick as asking every element for its own.
std::string ElementsWith(const char* attribute) {
  std::string path = "/descendant::*/@";
  return path.append(attribute).append("/..");
}

class PartReader {
 public:
  void Read(const XmlNode& element, std::string sheet) {
    const Marks marks(element);
    if (auto own = marks.Find(marker::kWorksheet)) sheet = std::move(*own);
    if (marks.MarkCell()) Add(sheet, ReadItem(element, marks));
    if (marks.Has(marker::kBlock)) return Add(sheet, ReadBlock(element, marks));
    for (const auto& child : element.Children({})) Read(*child, sheet);
  }
  [[nodiscard]] std::vector<Part> Parts() && { return std::move(parts_); }

 private:
  void Add(const std::string& sheet, std::variant<Item, Block> what) {
    if (sheet.empty()) RefusePosition("A value needs the worksheet that it goes to");
    parts_.push_back({sheet, std::move(what)});
  }

  std::vector<Part> parts_;
};

}  // namespace

std::vector<Part> ReadParts(const XmlDocument& document) {
  PartReader reader;
  if (const XmlNodeRef root = document.DocumentElement()) reader.Read(*root, {});
  return std::move(reader).Parts();
}

std::vector<DocumentProperty> ReadProperties(XmlDocument& document) {
  std::vector<DocumentProperty> properties;
  const auto named = document.SelectNodes(ElementsWith(marker::kPropertyName));
  for (const auto& node : named->Nodes()) {
    const Marks marks(*node);
    const auto value = marks.Find(marker::kPropertyValue);
    if (!value) continue;
    properties.push_back(
        {*marks.Find(marker::kPropertyName), *value, marks.Find(marker::kPropertyType).value_or("")});
  }
  const auto original = document.SelectNodes(ElementsWith(marker::kOriginalFileName));
  for (const auto& node : original->Nodes()) {
    properties.push_back({kOriginalName, node->Attribute(marker::kOriginalFileName), "text"});
  }
  return properties;
}

RecordReader::RecordReader(const Block& block) : count_(block.fields.size()) {
  for (std::size_t index = 0; index < count_; ++index) {
    if (!block.fields[index].value) continue;
    if (!by_name_.emplace(block.fields[index].name, index).second) {
      RefuseContent("A block has two fields of the name " + block.fields[index].name);
    }
  }
}

std::vector<std::optional<std::string>> RecordReader::Read(const XmlNode& record) const {
  std::vector<std::optional<std::string>> texts(count_);
  for (const auto& child : record.Children({})) {
    const auto field = by_name_.find(child->Name());
    if (field == by_name_.end()) RefuseContent("No field of the block has the name " + child->Name());
    texts[field->second] = child->Text();
  }
  return texts;
}

Position PlaceOf(const XmlNode& record) {
  return ReadBlockArea(Marks(record).Find(marker::kBlock).value_or("")).first;
}

}  // namespace talvex::markup
