#include "adapters/spreadsheet/message/cells.h"

#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace talvex::adapters::spreadsheet::message {

namespace {

using nlohmann::json;

constexpr const char* kKinds[] = {"nothing", "boolean", "number", "date", "text"};

// Every second up to here is a double of its own.
constexpr double kLastSecond = 9007199254740992.0;

[[noreturn]] void Broken(const char* what) {
  throw std::runtime_error(std::string("the message has ") + what);
}

template <class T>
void Append(std::vector<std::uint8_t>& bytes, T value) {
  std::array<std::uint8_t, sizeof(T)> raw{};
  std::memcpy(raw.data(), &value, sizeof(T));
  bytes.insert(bytes.end(), raw.begin(), raw.end());
}

void AppendText(std::vector<std::uint8_t>& bytes, const std::string& text) {
  Append(bytes, static_cast<std::uint32_t>(text.size()));
  bytes.insert(bytes.end(), text.begin(), text.end());
}

// Takes the values of a packed column one after the other.
class Column {
 public:
  Column(const json& cells, const char* name) : bytes_(cells.at(name).get_binary()) {}
  [[nodiscard]] bool AtEnd() const { return at_ == bytes_.size(); }

  template <class T>
  T Next() {
    T value;
    std::memcpy(&value, Take(sizeof(T)), sizeof(T));
    return value;
  }
  std::string NextText() {
    const auto size = Next<std::uint32_t>();
    const std::uint8_t* const text = Take(size);
    return {text, text + size};
  }

 private:
  const std::uint8_t* Take(std::size_t count) {
    if (bytes_.size() - at_ < count) Broken("a column that is too short");
    at_ += count;
    return bytes_.data() + (at_ - count);
  }

  const json::binary_t& bytes_;
  std::size_t at_ = 0;
};

Moment MomentOf(double seconds) {
  if (!(std::abs(seconds) < kLastSecond)) Broken("a date that is no number of seconds");
  return {static_cast<std::int64_t>(seconds)};
}

Value ReadOne(std::uint8_t kind, Column& numbers, Column& texts) {
  switch (kind) {
    case 0:
      return std::monostate{};
    case 1:
      return numbers.Next<double>() != 0;
    case 2:
      return numbers.Next<double>();
    case 3:
      return MomentOf(numbers.Next<double>());
    case 4:
      return texts.NextText();
    default:
      Broken("a value of an unknown type");
  }
}

}  // namespace

void CellWriter::Add(const Cell& cell) {
  Append(at_, static_cast<std::uint32_t>((cell.row - 1) * kColumns + (cell.column - 1)));
  const auto kind = static_cast<std::uint8_t>(cell.value.index());
  kinds_.push_back(cell.formula.empty() ? kind : static_cast<std::uint8_t>(kind | kHasFormula));
  if (const auto* boolean = std::get_if<bool>(&cell.value)) Append(numbers_, *boolean ? 1.0 : 0.0);
  if (const auto* number = std::get_if<double>(&cell.value)) Append(numbers_, *number);
  if (const auto* date = std::get_if<Moment>(&cell.value)) {
    Append(numbers_, static_cast<double>(date->seconds));
  }
  if (const auto* text = std::get_if<std::string>(&cell.value)) AppendText(texts_, *text);
  if (!cell.formula.empty()) AppendText(texts_, cell.formula);
}

json CellWriter::Take() {
  return {{"at", json::binary(std::move(at_))},
          {"kinds", json::binary(std::move(kinds_))},
          {"numbers", json::binary(std::move(numbers_))},
          {"texts", json::binary(std::move(texts_))}};
}

void ReadCells(const json& cells, const std::function<void(Cell&&)>& each) {
  Column places(cells, "at");
  Column kinds(cells, "kinds");
  Column numbers(cells, "numbers");
  Column texts(cells, "texts");
  std::int64_t before = -1;
  while (!places.AtEnd()) {
    const auto place = places.Next<std::uint32_t>();
    if (place <= before || place >= std::int64_t{kRows} * kColumns) Broken("a cell where none can be");
    before = place;
    const auto kind = kinds.Next<std::uint8_t>();
    Cell cell{static_cast<std::int32_t>(place / kColumns) + 1,
              static_cast<std::int32_t>(place % kColumns) + 1,
              ReadOne(kind & ~kHasFormula, numbers, texts),
              {}};
    if ((kind & kHasFormula) != 0) cell.formula = texts.NextText();
    each(std::move(cell));
  }
  if (!kinds.AtEnd() || !numbers.AtEnd() || !texts.AtEnd()) Broken("more values than cells");
}

json WriteValue(const Value& value) {
  struct Plain {
    json operator()(std::monostate /*nothing*/) const { return nullptr; }
    json operator()(bool boolean) const { return boolean; }
    json operator()(double number) const { return number; }
    json operator()(Moment date) const { return date.seconds; }
    json operator()(const std::string& text) const { return text; }
  };
  return json::array({kKinds[value.index()], std::visit(Plain{}, value)});
}

Value ReadValue(const json& value) {
  const auto& kind = value.at(0).get_ref<const std::string&>();
  const json& plain = value.at(1);
  if (kind == "boolean") return plain.get<bool>();
  if (kind == "number") return plain.get<double>();
  if (kind == "date" && plain.is_number_integer()) return Moment{plain.get<std::int64_t>()};
  if (kind == "text") return plain.get_ref<const std::string&>();
  if (kind == "nothing") return std::monostate{};
  Broken("a value of an unknown type");
}

}  // namespace talvex::adapters::spreadsheet::message
