#include "apps/cli/call_arguments.h"

#include <cmath>
#include <string_view>

#include "apps/cli/figures.h"
#include "apps/cli/layout.h"
#include "apps/cli/session.h"
#include "automation/conversions.h"

namespace talvex::apps {

namespace {

using automation::Parameter;
using automation::SameFolded;
using automation::Variant;

[[noreturn]] void Refuse(const Parameter& parameter, const std::string& text, const std::string& wanted) {
  throw UsageError(parameter.name + ": '" + Shortened(text) + "' is not " + wanted);
}

rpc::Json NumberFor(const Parameter& parameter, const std::string& text) {
  const auto number = automation::ParseNumber(text);
  if (!number) Refuse(parameter, text, "a number");
  return *number;
}

rpc::Json MemberFor(const Parameter& parameter, const std::string& text) {
  if (const auto number = parameter.enumeration->NumberOf(text)) return *number;
  const auto number = automation::ParseNumber(text);
  if (number && std::trunc(*number) == *number) return *number;
  std::string names;
  for (const auto& [name, value] : parameter.enumeration->Members())
    names.append(names.empty() ? "" : ", ").append(name);
  Refuse(parameter, text, "one of " + names);
}

rpc::Json DateFor(const Parameter& parameter, const std::string& text) {
  const auto date = automation::Date::Parse(text);
  if (!date) Refuse(parameter, text, "a date");
  return {{"$date", DayText(*date)}};
}

rpc::Json BooleanFor(const Parameter& parameter, const std::string& text) {
  if (SameFolded(text, "true") || SameFolded(text, "false") || automation::ParseNumber(text)) {
    return automation::ToBoolean(Variant(text));
  }
  Refuse(parameter, text, "true or false");
}

rpc::Json CurrencyFor(const Parameter& parameter, const std::string& text) {
  if (!automation::ParseNumber(text)) Refuse(parameter, text, "an amount");
  return {{"$currency", automation::ToCurrency(Variant(text)).ToFixedText()}};
}

rpc::Json JsonFor(const Parameter& parameter, const std::string& text) {
  try {
    return rpc::ParseJson(text);
  } catch (const rpc::JsonError& error) {
    // Whatever does not look like a structure is a text to a variant, and nothing to the others.
    const bool structure = text.starts_with('{') || text.starts_with('[');
    if (parameter.type == "variant" && !structure) return text;
    Refuse(parameter, text, std::string("a JSON value: ") + error.what());
  }
}

rpc::Json ValueFor(const Parameter& parameter, const std::string& text) {
  if (text == "null") return nullptr;
  if (text == "empty") return {{"$empty", true}};
  if (parameter.enumeration != nullptr) return MemberFor(parameter, text);
  if (parameter.type == "string") return text;
  if (parameter.type == "double" || parameter.type == "int32" || parameter.type == "int16") {
    return NumberFor(parameter, text);
  }
  if (parameter.type == "date") return DateFor(parameter, text);
  if (parameter.type == "boolean") return BooleanFor(parameter, text);
  if (parameter.type == "currency") return CurrencyFor(parameter, text);
  return JsonFor(parameter, text);
}

const Parameter& ParameterNamed(const automation::Method& method, std::string_view name) {
  std::string names;
  for (const Parameter& parameter : method.parameters) {
    if (SameFolded(parameter.name, name)) return parameter;
    names.append(names.empty() ? "" : ", ").append(parameter.name);
  }
  throw UsageError(method.name + " has no parameter '" + Shortened(name) + "'; it has " +
                   (names.empty() ? "none" : names));
}

}  // namespace

rpc::Json ReadArguments(const automation::Method& method, const std::vector<std::string>& texts) {
  rpc::Json arguments = rpc::Json::object();
  for (const std::string& text : texts) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos)
      throw UsageError("'" + Shortened(text) + "' is not of the form name=value");
    const Parameter& parameter = ParameterNamed(method, std::string_view(text).substr(0, sign));
    if (arguments.contains(parameter.name)) throw UsageError(parameter.name + " is given twice");
    arguments[parameter.name] = ValueFor(parameter, text.substr(sign + 1));
  }
  return arguments;
}

}  // namespace talvex::apps
