#include "exchange/typed_value.h"

#include <optional>

#include "automation/conversions.h"
#include "automation/text.h"
#include "exchange/failure.h"

namespace talvex {

using automation::Date;
using automation::Variant;
using markup::ValueType;

namespace {

std::optional<bool> ParseBoolean(std::string_view text) {
  const std::string folded = automation::Folded(automation::Trimmed(text));
  if (folded == "true" || folded == "yes") return true;
  if (folded == "false" || folded == "no") return false;
  return std::nullopt;
}

template <class T>
Variant OrRefuse(const std::optional<T>& value, const char* what, const std::string& text) {
  if (value) return *value;
  throw Failure(failure_label::kWriting, "\"" + text + "\" is no " + what);
}

}  // namespace

Variant TypedValue(ValueType type, const std::string& text) {
  if (text.empty()) return {};
  switch (type) {
    case ValueType::Number:
      return OrRefuse(automation::ParseNumber(text), "number", text);
    case ValueType::Date:
      return OrRefuse(Date::Parse(text), "date", text);
    case ValueType::Boolean:
      return OrRefuse(ParseBoolean(text), "Boolean", text);
    default:
      return text;
  }
}

}  // namespace talvex
