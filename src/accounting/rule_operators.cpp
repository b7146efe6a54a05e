#include "accounting/rule_operators.h"

#include "automation/conversions.h"
#include "automation/decimal.h"
#include "automation/text.h"

namespace talvex {

using automation::Variant;

namespace {

std::string AsText(double value) { return automation::NumberText(value); }
std::string AsText(const automation::Date& value) { return value.ToText(); }
std::string_view AsText(std::string_view value) { return value; }

// Calls `compare` with both sides as the type in which they compare.
template <class Compare>
bool AsOneType(const PropertyValue& property, std::string_view field_value, Compare&& compare) {
  if (property.Number()) {
    if (const auto number = automation::ParseNumber(field_value)) return compare(*property.Number(), *number);
  }
  if (property.Date()) {
    if (const auto date = automation::Date::Parse(field_value)) return compare(*property.Date(), *date);
  }
  return compare(std::string_view(property.Text()), field_value);
}

// An item is recognised only next to a separator, so a list of a single item has none.
bool IsItem(std::string_view item, std::string_view list) {
  const std::string between = ";" + std::string(automation::Trimmed(item)) + ";";
  const std::string_view bounded = between;
  return list.find(bounded) != std::string_view::npos ||
         list.ends_with(bounded.substr(0, bounded.size() - 1)) || list.starts_with(bounded.substr(1));
}

}  // namespace

PropertyValue::PropertyValue(const Variant& value)
    : text_(value.IsNull() ? std::string() : automation::ToText(value)) {
  if (automation::IsNumeric(value)) {
    number_ = automation::ToDouble(value);
  } else if (automation::IsDate(value)) {
    date_ = automation::ToDate(value);
  }
}

bool LineHolds(const PropertyValue& property, RuleOperators comparison, std::string_view field_value) {
  const auto compared = [&](auto&& compare) { return AsOneType(property, field_value, compare); };
  switch (comparison) {
    case RuleOperators::Less:
      return compared([](const auto& p, const auto& f) { return p < f; });
    case RuleOperators::LessEqual:
      return compared([](const auto& p, const auto& f) { return p <= f; });
    case RuleOperators::Greater:
      return compared([](const auto& p, const auto& f) { return p > f; });
    case RuleOperators::GreaterEqual:
      return compared([](const auto& p, const auto& f) { return p >= f; });
    case RuleOperators::Equal:
      return compared([](const auto& p, const auto& f) { return p == f; });
    case RuleOperators::NotEqual:
      return compared([](const auto& p, const auto& f) { return p != f; });
    case RuleOperators::Contains:
      return compared(
          [](const auto& p, const auto& f) { return AsText(p).find(AsText(f)) != std::string_view::npos; });
    // A list with a separator is neither a number nor a date, and one without has no items.
    case RuleOperators::Inside:
      return IsItem(property.Text(), field_value);
    case RuleOperators::NotIn:
      return !IsItem(property.Text(), field_value);
  }
  return true;
}

}  // namespace talvex
