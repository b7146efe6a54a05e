#include "sheet/properties.h"

#include <goffice/app/go-doc.h>
#include <gsf/gsf-doc-meta-data.h>
#include <gsf/gsf-timestamp.h>

#include <algorithm>
#include <limits>
#include <map>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/cell_values.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

using nlohmann::json;

// The library keeps what the format itself defines (title, author, counts) under names of these families.
bool IsCustom(const std::string& name) {
  static constexpr const char* kFamilies[] = {"dc:", "gsf:", "meta:", "msole:", "xlsx:"};
  return std::none_of(std::begin(kFamilies), std::end(kFamilies),
                      [&](const char* family) { return name.starts_with(family); });
}

message::Value ValueOf(const GValue* value) {
  if (value == nullptr) return std::monostate{};
  if (G_VALUE_HOLDS_BOOLEAN(value)) return g_value_get_boolean(value) != 0;
  if (G_VALUE_HOLDS(value, GSF_TIMESTAMP_TYPE)) {
    const auto* stamp = static_cast<const GsfTimestamp*>(g_value_get_boxed(value));
    return message::Moment{static_cast<std::int64_t>(stamp->timet)};
  }
  if (G_VALUE_HOLDS_STRING(value)) return ValidText(g_value_get_string(value));
  GValue real = G_VALUE_INIT;
  g_value_init(&real, G_TYPE_DOUBLE);
  if (g_value_transform(value, &real) != 0) return g_value_get_double(&real);
  return std::monostate{};
}

// By name, so that the same file always reads the same: the library keeps them in a hash table.
using Properties = std::map<std::string, const GsfDocProp*>;

Properties CustomProperties(const GsfDocMetaData* data) {
  Properties found;
  if (data == nullptr) return found;
  gsf_doc_meta_data_foreach(
      data,
      [](gpointer key, gpointer property, gpointer result) {
        const std::string name = static_cast<const char*>(key);
        if (IsCustom(name)) {
          (*static_cast<Properties*>(result))[name] = static_cast<const GsfDocProp*>(property);
        }
      },
      &found);
  return found;
}

struct ToGenericValue {
  GValue* target;

  void operator()(std::monostate /*nothing*/) const { (*this)(std::string()); }
  void operator()(bool value) const {
    g_value_init(target, G_TYPE_BOOLEAN);
    g_value_set_boolean(target, value ? TRUE : FALSE);
  }
  void operator()(double value) const {
    g_value_init(target, G_TYPE_DOUBLE);
    g_value_set_double(target, value);
  }
  void operator()(message::Moment value) const {
    // The library counts the seconds since 1970 in 32 bits.
    if (value.seconds < 0 || value.seconds > std::numeric_limits<guint32>::max()) {
      throw Refusal(message::refusals::kEdit, "A document property holds no date before 1970 or after 2106");
    }
    GsfTimestamp* stamp = gsf_timestamp_new();
    gsf_timestamp_set_time(stamp, static_cast<guint64>(value.seconds));
    g_value_init(target, GSF_TIMESTAMP_TYPE);
    gsf_timestamp_to_value(stamp, target);
    gsf_timestamp_free(stamp);
  }
  void operator()(const std::string& value) const {
    g_value_init(target, G_TYPE_STRING);
    g_value_set_string(target, value.c_str());
  }
};

}  // namespace

json ReadProperties(const Workbook* book) {
  json::array_t list;
  for (const auto& [name, property] : CustomProperties(go_doc_get_meta_data(GO_DOC(book)))) {
    const message::Value value = ValueOf(gsf_doc_prop_get_val(property));
    if (std::holds_alternative<std::monostate>(value)) continue;
    list.push_back({{"name", ValidText(name.c_str())},
                    {"value", message::WriteValue(value)},
                    {"linked", gsf_doc_prop_get_link(property) != nullptr}});
  }
  return list;
}

void SetProperty(Workbook* book, const std::string& name, const message::Value& value) {
  GsfDocMetaData* data = go_doc_get_meta_data(GO_DOC(book));
  std::string kept = name;
  for (const auto& [other, property] : CustomProperties(data)) {
    if (g_ascii_strcasecmp(other.c_str(), name.c_str()) == 0) kept = other;
  }
  gsf_doc_meta_data_remove(data, kept.c_str());
  // The table takes the name and the value over.
  auto* made = g_new0(GValue, 1);
  std::visit(ToGenericValue{made}, value);
  gsf_doc_meta_data_insert(data, g_strdup(kept.c_str()), made);
}  // NOLINT(clang-analyzer-unix.Malloc): see above.

}  // namespace talvex::sheet
