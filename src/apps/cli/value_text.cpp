#include "apps/cli/value_text.h"

#include <cstddef>

#include "apps/cli/layout.h"
#include "automation/decimal.h"

namespace talvex::apps {

namespace {

// The value under the key of a value that takes more than JSON has, {"$date": ..}; null for any other value.
const rpc::Json* Inner(const rpc::Json& value, const char* key) {
  if (!value.is_object()) return nullptr;
  const auto found = value.find(key);
  return found == value.end() ? nullptr : &*found;
}

std::string SimpleText(const rpc::Json& value) {
  if (value.is_null()) return "Null";
  if (value.is_boolean()) return value.get<bool>() ? "True" : "False";
  if (value.is_number_float()) return automation::NumberText(value.get<double>());
  if (value.is_string()) return Printable(value.get_ref<const std::string&>());
  if (Inner(value, "$empty") != nullptr) return "Empty";
  for (const char* key : {"$date", "$currency"}) {
    if (const rpc::Json* const text = Inner(value, key)) return text->get<std::string>();
  }
  if (Inner(value, "$object") != nullptr) return "an object";
  return Printable(rpc::JsonLine(value));
}

void Append(std::string& lines, std::size_t depth, std::string_view name, const rpc::Json& value);

// The key of an entry is null for an item of a collection that has none.
void AppendEntries(std::string& lines, std::size_t depth, const rpc::Json& entries) {
  std::size_t position = 0;
  for (const rpc::Json& entry : entries) {
    ++position;
    const rpc::Json& key = entry.at(0);
    Append(lines, depth, key.is_string() ? key.get<std::string>() : std::to_string(position), entry.at(1));
  }
}

void Append(std::string& lines, std::size_t depth, std::string_view name, const rpc::Json& value) {
  lines.append(2 * depth, ' ').append(Printable(name)).append(":");
  for (const char* key : {"$dictionary", "$collection"}) {
    const rpc::Json* const entries = Inner(value, key);
    if (entries == nullptr) continue;
    lines.append(entries->empty() ? " no items\n" : "\n");
    AppendEntries(lines, depth + 1, *entries);
    return;
  }
  if (!value.is_array()) {
    lines.append(" ").append(SimpleText(value)).append("\n");
    return;
  }
  lines.append(value.empty() ? " no items\n" : "\n");
  std::size_t position = 0;
  for (const rpc::Json& item : value) Append(lines, depth + 1, std::to_string(position++), item);
}

}  // namespace

std::string NamedValueText(std::string_view name, const rpc::Json& value) {
  std::string lines;
  Append(lines, 0, name, value);
  return lines;
}

}  // namespace talvex::apps
