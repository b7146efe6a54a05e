#include "adapters/spreadsheet/translation.h"

#include <stdexcept>
#include <utility>

#include "adapters/spreadsheet/message/cells.h"
#include "adapters/spreadsheet/message/messages.h"
#include "automation/text.h"

namespace talvex::adapters::spreadsheet {

namespace {

using automation::Date;
using automation::Variant;
using nlohmann::json;
namespace book = platform::spreadsheet;
namespace kind = message::edits;

std::string Checked(std::string text) {
  if (!automation::IsUtf8(text)) throw std::runtime_error("the message has a text that is not UTF-8");
  return text;
}

struct ToVariant {
  Variant operator()(std::monostate /*nothing*/) const { return {}; }
  Variant operator()(bool value) const { return value; }
  Variant operator()(double value) const { return value; }
  Variant operator()(message::Moment value) const { return Date::FromSeconds(value.seconds); }
  Variant operator()(std::string value) const { return Checked(std::move(value)); }
};

// Cells and properties hold no other kinds.
message::Value FromVariant(const Variant& value) {
  switch (value.Type()) {
    case automation::Kind::Boolean:
      return value.As<bool>();
    case automation::Kind::Double:
      return value.As<double>();
    case automation::Kind::Date:
      return message::Moment{value.As<Date>().Seconds()};
    case automation::Kind::String:
      return value.As<std::string>();
    default:
      return std::monostate{};
  }
}

book::Sheet ReadSheet(const json& sheet) {
  book::Sheet result{Checked(sheet.at("name").get<std::string>()), {}};
  message::ReadCells(sheet.at("cells"), [&](message::Cell&& cell) {
    result.cells.Set({cell.row, cell.column},
                     {std::visit(ToVariant{}, std::move(cell.value)), Checked(std::move(cell.formula))});
  });
  return result;
}

std::vector<book::Sheet> ReadSheets(const json& sheets) {
  std::vector<book::Sheet> result;
  for (const auto& sheet : sheets) result.push_back(ReadSheet(sheet));
  return result;
}

struct ToMessage {
  json operator()(const book::edit::SetCells& edit) const {
    message::CellWriter cells;
    for (const auto& [row, used] : edit.cells.ByRow()) {
      for (const auto& [column, cell] : used) {
        cells.Add({row, column, FromVariant(cell.value), cell.formula});
      }
    }
    return {{"edit", kind::kCells}, {"sheet", edit.sheet}, {"cells", cells.Take()}};
  }
  json operator()(const book::edit::AddSheet& edit) const {
    return {{"edit", kind::kAdd}, {"name", edit.name}};
  }
  json operator()(const book::edit::RenameSheet& edit) const {
    return {{"edit", kind::kRename}, {"sheet", edit.sheet}, {"name", edit.name}};
  }
  json operator()(const book::edit::InsertRows& edit) const {
    return {{"edit", kind::kInsert}, {"sheet", edit.sheet}, {"row", edit.row}, {"count", edit.count}};
  }
  json operator()(const book::edit::CopyRows& edit) const {
    return {{"edit", kind::kCopy}, {"sheet", edit.sheet},   {"row", edit.row},
            {"count", edit.count}, {"target", edit.target}, {"only_styles", edit.only_styles}};
  }
  json operator()(const book::edit::SetProperty& edit) const {
    return {{"edit", kind::kProperty},
            {"name", edit.name},
            {"value", message::WriteValue(FromVariant(edit.value))}};
  }
};

}  // namespace

book::Content ReadContent(const json& answer) {
  book::Content content{ReadSheets(answer.at("sheets")), {}};
  for (const auto& property : answer.at("properties")) {
    content.properties.push_back({Checked(property.at("name").get<std::string>()),
                                  std::visit(ToVariant{}, message::ReadValue(property.at("value"))),
                                  property.at("linked").get<bool>()});
  }
  return content;
}

book::Rewritten ReadRewritten(json& answer) {
  const auto& bytes = answer.at("file").get_binary();
  return {std::string(bytes.begin(), bytes.end()), ReadSheets(answer.at("formulas"))};
}

json WriteEdits(const std::string& base, const std::vector<book::Edit>& edits) {
  json::array_t list;
  list.reserve(edits.size());
  for (const auto& edit : edits) list.push_back(std::visit(ToMessage{}, edit));
  return {{"base", base}, {"edits", std::move(list)}};
}

}  // namespace talvex::adapters::spreadsheet
