#include "apps/cli/properties.h"

#include "apps/cli/layout.h"
#include "apps/cli/session.h"

namespace talvex::apps {

using automation::Variant;

std::shared_ptr<automation::Collection> PropertiesOf(
    const std::vector<std::string>& values, const std::vector<std::pair<std::string, std::string>>& set) {
  auto properties = std::make_shared<automation::Collection>();
  const auto add = [&](const std::string& name, const Variant& value) {
    try {
      properties->Add(value, name);
    } catch (const automation::Error&) {
      throw UsageError("the property '" + Shortened(name) + "' is given twice");
    }
  };
  for (const auto& [name, value] : set) add(name, value);
  for (const std::string& text : values) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
      throw UsageError("'" + Shortened(text) + "' is no property: NAME=VALUE is wanted");
    const std::string value = text.substr(equals + 1);
    add(text.substr(0, equals), value == "null" ? Variant(automation::kNull) : Variant(value));
  }
  return properties;
}

}  // namespace talvex::apps
