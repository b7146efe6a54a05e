#include "adapters/spreadsheet/message/cells.h"

#include <stdexcept>
#include <utility>

namespace talvex::adapters::spreadsheet::message {

namespace {

using nlohmann::json;

[[noreturn]] void Broken(const char* what) {
  throw std::runtime_error(std::string("the message has ") + what);
}

json Plain(Value value) {
  return std::visit(
      [](auto&& one) -> json {
        using T = std::remove_cvref_t<decltype(one)>;
        if constexpr (std::is_same_v<T, std::monostate>) return nullptr;
        if constexpr (std::is_same_v<T, Moment>) return one.seconds;
        if constexpr (!std::is_same_v<T, std::monostate> && !std::is_same_v<T, Moment>) return std::move(one);
      },
      std::move(value));
}

Value Typed(const json& value, bool is_date) {
  if (is_date) {
    if (!value.is_number_integer()) Broken("a date that is no number of seconds");
    return Moment{value.get<std::int64_t>()};
  }
  if (value.is_null()) return std::monostate{};
  if (value.is_boolean()) return value.get<bool>();
  if (value.is_number()) return value.get<double>();
  if (value.is_string()) return value.get_ref<const std::string&>();
  Broken("a value of an unknown type");
}

}  // namespace

void CellWriter::Add(Cell cell) {
  const auto index = static_cast<std::int64_t>(at_.size());
  at_.emplace_back(std::int64_t{cell.row - 1} * kColumns + (cell.column - 1));
  if (std::holds_alternative<Moment>(cell.value)) dates_.emplace_back(index);
  values_.push_back(Plain(std::move(cell.value)));
  if (!cell.formula.empty()) formulas_.push_back(json::array({index, std::move(cell.formula)}));
}

json CellWriter::Take() {
  return {{"at", std::move(at_)},
          {"values", std::move(values_)},
          {"dates", std::move(dates_)},
          {"formulas", std::move(formulas_)}};
}

void ReadCells(const json& cells, const std::function<void(Cell&&)>& each) {
  const auto column = [&](const char* name) -> const json::array_t& {
    return cells.at(name).get_ref<const json::array_t&>();
  };
  const auto& places = column("at");
  const auto& values = column("values");
  if (values.size() != places.size()) Broken("columns of different lengths");
  const auto& dates = column("dates");
  const auto& formulas = column("formulas");
  auto date = dates.begin();
  auto formula = formulas.begin();
  std::int64_t before = -1;
  for (std::size_t index = 0; index < places.size(); ++index) {
    const auto place = places[index].get<std::int64_t>();
    if (place <= before || place >= std::int64_t{kRows} * kColumns) Broken("a cell where none can be");
    before = place;
    const bool is_date = date != dates.end() && date->get<std::size_t>() == index;
    if (is_date) ++date;
    Cell cell{static_cast<std::int32_t>(place / kColumns) + 1,
              static_cast<std::int32_t>(place % kColumns) + 1,
              Typed(values[index], is_date),
              {}};
    if (formula != formulas.end() && formula->at(0).get<std::size_t>() == index) {
      cell.formula = (formula++)->at(1).get<std::string>();
    }
    each(std::move(cell));
  }
  if (date != dates.end() || formula != formulas.end()) Broken("a column out of order");
}

json WriteValue(const Value& value) {
  static constexpr const char* kKinds[] = {"nothing", "boolean", "number", "date", "text"};
  return json::array({kKinds[value.index()], Plain(value)});
}

Value ReadValue(const json& value) { return Typed(value.at(1), value.at(0) == "date"); }

}  // namespace talvex::adapters::spreadsheet::message
