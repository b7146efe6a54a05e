#include "support/values.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "automation/collection.h"
#include "automation/conversions.h"
#include "automation/dictionary.h"
#include "automation/text.h"
#include "platform/environment.h"
#include "platform/xml/xml_document.h"

namespace talvex::test {

namespace {

using automation::Array;
using automation::Collection;
using automation::Date;
using automation::Dictionary;
using automation::Kind;
using automation::Variant;

Variant Named(const std::string& word) {
  if (word == "null") return automation::kNull;
  if (word == "empty") return {};
  if (word == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (word == "infinity") return std::numeric_limits<double>::infinity();
  if (word == "true") return true;
  if (word == "false") return false;
  if (const auto date = Date::Parse(word)) return *date;
  if (const auto number = automation::ParseNumber(word)) {
    const bool whole = word.find_first_of(".eE") == std::string::npos;
    return whole ? Variant(automation::RoundToInt32(*number)) : Variant(*number);
  }
  return word;
}

class Reader {
 public:
  explicit Reader(const std::string& text) : text_(text) {}

  bool AtEnd() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    return at_ == text_.size();
  }

  [[nodiscard]] bool StandsBeforeQuote() const { return at_ < text_.size() && text_[at_] == '"'; }

  Variant Value() {
    if (AtEnd()) throw std::runtime_error("a value is missing at the end of: " + text_);
    if (StandsBeforeQuote()) return Quoted();
    if (Skip("xml\"")) return Document();
    if (Skip("node\"")) return Document()->DocumentElement();
    if (Skip("[")) return ArrayItems();
    if (Skip("dictionary{")) {
      auto dictionary = std::make_shared<Dictionary>();
      Entries([&](const std::string& key, const Variant& item) { dictionary->Add(key, item); });
      return dictionary;
    }
    if (Skip("{")) {
      auto collection = std::make_shared<Collection>();
      Entries([&](const std::string& key, const Variant& item) { collection->Add(item, key); });
      return collection;
    }
    const std::string word = Word(" ,]}{");
    if (at_ < text_.size() && text_[at_] == '{') return NewObject(word);
    return Named(word);
  }

  // Up to the next blank; runs in quotes may contain some.
  std::string MixedWord() {
    std::string word;
    while (at_ < text_.size() && text_[at_] != ' ') word += StandsBeforeQuote() ? Quoted() : Word(" \"");
    return word;
  }

  std::string Word(const char* ends) {
    const std::size_t end = std::min(text_.find_first_of(ends, at_), text_.size());
    const std::size_t begin = std::exchange(at_, end);
    return text_.substr(begin, end - begin);
  }

  // The quote before it has been read.
  std::shared_ptr<platform::xml::XmlDocument> Document() {
    --at_;
    auto document = std::make_shared<platform::xml::XmlDocument>();
    if (!document->LoadXml(Quoted())) throw std::runtime_error("no XML in: " + text_);
    return document;
  }

  std::string Quoted() {
    std::string word;
    for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
      if (text_[at_] != '\\' || at_ + 1 == text_.size()) {
        word += text_[at_];
        continue;
      }
      const char escaped = text_[++at_];
      word += escaped == 'r' ? '\r' : escaped == 'n' ? '\n' : escaped;
    }
    Want("\"");
    return word;
  }

 private:
  // What stands behind the name of its class are its properties.
  automation::ObjectRef NewObject(const std::string& class_name) {
    const auto object = platform::Environment::Current().classes->Create(class_name);
    Want("{");
    Entries([&](const std::string& property, const Variant& value) { object->Set(property, value); });
    return object;
  }

  bool Skip(std::string_view word) {
    if (AtEnd() || text_.compare(at_, word.size(), word) != 0) return false;
    at_ += word.size();
    return true;
  }

  void Want(std::string_view word) {
    if (!Skip(word)) throw std::runtime_error("'" + std::string(word) + "' is missing in: " + text_);
  }

  Array ArrayItems() {
    std::vector<Variant> items;
    while (!Skip("]")) {
      items.push_back(Value());
      if (Skip("]")) break;
      Want(",");
    }
    return items;
  }

  template <class Add>
  void Entries(const Add& add) {
    while (!Skip("}")) {
      const std::string key = automation::ToText(Value());
      Want(":");
      add(key, Value());
      if (Skip("}")) break;
      Want(",");
    }
  }

  const std::string& text_;
  std::size_t at_ = 0;
};

template <class Object>
const Object* As(const Variant& value) {
  return dynamic_cast<const Object*>(value.As<automation::ObjectRef>().get());
}

std::string ShownObject(const Variant& value) {
  std::string items;
  const auto add = [&](const std::string& key, const Variant& item) {
    items.append(items.empty() ? "" : ", ").append(key).append(": ").append(Shown(item));
  };
  if (const auto* dictionary = As<Dictionary>(value)) {
    for (const auto& [key, item] : dictionary->Entries()) add(key, item);
    return "dictionary{" + items + "}";
  }
  if (const auto* collection = As<Collection>(value)) {
    for (const auto& entry : collection->Entries()) add(entry.key.value_or(""), entry.item);
    return "{" + items + "}";
  }
  const automation::ObjectRef object = value.As<automation::ObjectRef>();
  if (!object->Class().Methods().empty()) return "<Object>";
  for (const automation::Property& property : object->Class().Properties())
    add(property.name, object->Get(property.name));
  return object->Class().Name() + "{" + items + "}";
}

std::string OnOneLine(const std::string& text) {
  return automation::Replaced(automation::Replaced(text, "\r", "\\r"), "\n", "\\n");
}

std::string ShownArray(const Array& array) {
  std::string items;
  for (const Variant& item : array.Items()) items.append(items.empty() ? "" : ", ").append(Shown(item));
  return "[" + items + "]";
}

}  // namespace

std::vector<Variant> ReadValues(const std::string& text) {
  Reader reader(text);
  std::vector<Variant> values;
  while (!reader.AtEnd()) values.push_back(reader.Value());
  return values;
}

std::vector<std::string> Words(const std::string& text) {
  Reader reader(text);
  std::vector<std::string> words;
  while (!reader.AtEnd()) words.push_back(reader.MixedWord());
  return words;
}

std::string Shown(const Variant& value) {
  switch (value.Type()) {
    case Kind::Empty:
      return "empty";
    case Kind::Null:
      return "null";
    case Kind::Date: {
      const std::string iso = value.As<Date>().ToIso();
      return iso.ends_with("T00:00:00") ? iso.substr(0, 10) : iso;
    }
    case Kind::String:
      return value.As<std::string>().empty() ? "\"\"" : OnOneLine(value.As<std::string>());
    case Kind::Array:
      return ShownArray(value.As<Array>());
    case Kind::Object:
      return ShownObject(value);
    default:
      return automation::ToText(value);
  }
}

}  // namespace talvex::test
