#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "apps/rpc/values.h"
#include "automation/collection.h"
#include "automation/dictionary.h"
#include "platform/xml/xml_document.h"

namespace talvex::apps::rpc {

using automation::Array;
using automation::Collection;
using automation::Currency;
using automation::Date;
using automation::Dictionary;
using automation::ObjectRef;
using automation::Variant;
using platform::xml::XmlDocument;

namespace {

Variant ReadNumber(const Json& json) {
  using Limits = std::numeric_limits<std::int32_t>;
  const auto number = json.get<double>();
  const bool whole = json.is_number_integer() && number >= Limits::min() && number <= Limits::max();
  return whole ? Variant(json.get<std::int32_t>()) : Variant(number);
}

Array ReadArray(const Json& json, const ObjectTable& objects) {
  std::vector<Variant> items;
  items.reserve(json.size());
  for (const Json& item : json) items.push_back(ReadValue(item, objects));
  return items;
}

// The content of {"$name": content} as a text.
const std::string& Text(const Json& content, std::string_view name) {
  if (!content.is_string()) {
    throw InvalidParams("a text is wanted in {\"" + std::string(name) + "\": " + ShownJson(content) + "}");
  }
  return content.get_ref<const std::string&>();
}

Variant ReadEmpty(const Json& content, const ObjectTable& /*objects*/) {
  if (content != true) throw InvalidParams("Empty is {\"$empty\": true}, not " + ShownJson(content));
  return {};
}

Variant ReadDate(const Json& content, const ObjectTable& /*objects*/) {
  constexpr std::size_t kDayLength = 10;  // "2026-11-21"
  const std::string& text = Text(content, "$date");
  const auto date = Date::ParseIso(text.size() == kDayLength ? text + "T00:00:00" : text);
  if (!date) throw InvalidParams("there is no date " + ShownJson(content));
  return *date;
}

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Digits with a sign or none, and up to four decimals or none: what a Currency can hold as it stands.
std::optional<Currency> ParseAmount(std::string_view text) {
  constexpr std::size_t kPlaces = 4;
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view decimals = text.substr(std::min(point + 1, text.size()));
  if (point == 0 || !IsDigit(text[point - 1]) || decimals.size() > kPlaces) return std::nullopt;
  if (point < text.size() && decimals.empty()) return std::nullopt;

  std::string digits(text.substr(0, point));
  digits.append(decimals).append(kPlaces - decimals.size(), '0');
  std::int64_t units = 0;
  const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), units);
  const bool whole_text = end == digits.data() + digits.size();
  return status == std::errc() && whole_text ? std::optional(Currency::FromUnits(units)) : std::nullopt;
}

Variant ReadCurrency(const Json& content, const ObjectTable& /*objects*/) {
  const auto amount = ParseAmount(Text(content, "$currency"));
  if (!amount) throw InvalidParams("there is no currency amount " + ShownJson(content));
  return *amount;
}

// Checks that the content is an array of pairs, as containers are written.
void CheckPairs(const Json& content, std::string_view name) {
  if (!content.is_array()) {
    throw InvalidParams("{\"" + std::string(name) + "\": ..} takes an array of pairs, not " +
                        ShownJson(content));
  }
  for (const Json& pair : content) {
    if (!pair.is_array() || pair.size() != 2) {
      throw InvalidParams("a pair of key and item is wanted, not " + ShownJson(pair));
    }
  }
}

[[noreturn]] void RaiseKeyTwice(const Json& key) {
  throw InvalidParams("the key " + ShownJson(key) + " comes twice");
}

Variant ReadDictionary(const Json& content, const ObjectTable& objects) {
  CheckPairs(content, "$dictionary");
  auto dictionary = std::make_shared<Dictionary>();
  for (const Json& pair : content) {
    const Json& key = pair[0];
    if (!key.is_string()) throw InvalidParams("a dictionary's key is a text, not " + ShownJson(key));
    const auto& text = key.get_ref<const std::string&>();
    if (dictionary->Exists(text)) RaiseKeyTwice(key);
    dictionary->Add(text, ReadValue(pair[1], objects));
  }
  return dictionary;
}

Variant ReadCollection(const Json& content, const ObjectTable& objects) {
  CheckPairs(content, "$collection");
  auto collection = std::make_shared<Collection>();
  for (const Json& pair : content) {
    const Json& key = pair[0];
    if (!key.is_string() && !key.is_null()) {
      throw InvalidParams("a collection's key is a text or null, not " + ShownJson(key));
    }
    const auto text = key.is_null() ? std::nullopt : std::optional(key.get<std::string>());
    const Variant item = ReadValue(pair[1], objects);
    try {
      collection->Add(item, text);
    } catch (const automation::Error&) {
      RaiseKeyTwice(key);
    }
  }
  return collection;
}

Variant ReadObject(const Json& content, const ObjectTable& objects) {
  ObjectRef object = content.is_number_integer() ? objects.Find(content.get<std::int64_t>()) : nullptr;
  if (object == nullptr) throw InvalidParams("there is no object " + ShownJson(content));
  return object;
}

Variant ReadDocument(const Json& content, const ObjectTable& /*objects*/) {
  auto document = std::make_shared<XmlDocument>();
  document->LoadXml(Text(content, "$xml"));
  return document;
}

// Two members, "$xml" and "$node".
Variant ReadNode(const Json& json) {
  const Json& content = json.at("$xml");
  XmlDocument document;
  if (!document.LoadXml(Text(content, "$xml"))) {
    throw InvalidParams("no XML document is " + ShownJson(content) + ": " + document.Error().reason);
  }
  const Json& xpath = json.at("$node");
  try {
    if (auto node = document.SelectSingleNode(Text(xpath, "$node"))) return node;
  } catch (const automation::Error& error) {
    throw InvalidParams(ShownJson(xpath) + ": " + error.Description());
  }
  throw InvalidParams("there is no node " + ShownJson(xpath) + " in " + ShownJson(content));
}

struct Form {
  std::string_view name;
  Variant (*read)(const Json& content, const ObjectTable& objects);
};
constexpr std::array<Form, 7> kForms = {{{"$empty", ReadEmpty},
                                         {"$date", ReadDate},
                                         {"$currency", ReadCurrency},
                                         {"$dictionary", ReadDictionary},
                                         {"$collection", ReadCollection},
                                         {"$xml", ReadDocument},
                                         {"$object", ReadObject}}};

// A value in an object of one member, whose name says the form; only a node takes two.
Variant ReadForm(const Json& json, const ObjectTable& objects) {
  if (json.size() == 2 && json.contains("$xml") && json.contains("$node")) return ReadNode(json);
  if (json.size() != 1) throw InvalidParams("no value is written " + ShownJson(json));
  const auto member = json.begin();
  for (const Form& form : kForms) {
    if (form.name == member.key()) return form.read(member.value(), objects);
  }
  throw InvalidParams("no form of value is called " + ShownJson(member.key()));
}

}  // namespace

Variant ReadValue(const Json& json, const ObjectTable& objects) {
  if (json.is_null()) return automation::kNull;
  if (json.is_boolean()) return json.get<bool>();
  if (json.is_number()) return ReadNumber(json);
  if (json.is_string()) return json.get<std::string>();
  if (json.is_array()) return ReadArray(json, objects);
  return ReadForm(json, objects);
}

}  // namespace talvex::apps::rpc
