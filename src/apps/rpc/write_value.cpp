#include <cmath>
#include <unordered_set>

#include "apps/rpc/values.h"
#include "automation/collection.h"
#include "automation/dictionary.h"
#include "automation/error.h"

namespace talvex::apps::rpc {

using automation::Array;
using automation::Collection;
using automation::Currency;
using automation::Date;
using automation::Dictionary;
using automation::Error;
using automation::Kind;
using automation::ObjectRef;
using automation::Variant;

namespace {

Json WriteNumber(double number) {
  if (!std::isfinite(number)) {
    throw Error(automation::error_number::kOverflow, "Talvex.Gateway", "Overflow: the number is not finite");
  }
  return number;
}

Json WriteDate(Date date) {
  const std::string text = date.ToIso();
  return {{"$date", date == date.DayOnly() ? text.substr(0, text.find('T')) : text}};
}

// Writes one value with everything in it.
class Writer {
 public:
  explicit Writer(ObjectTable& objects) : objects_(objects) {}

  Json Write(const Variant& value) {
    switch (value.Type()) {
      case Kind::Empty:
        return {{"$empty", true}};
      case Kind::Null:
        return nullptr;
      case Kind::Boolean:
        return value.As<bool>();
      case Kind::Int16:
        return value.As<std::int16_t>();
      case Kind::Int32:
        return value.As<std::int32_t>();
      case Kind::Double:
        return WriteNumber(value.As<double>());
      case Kind::Currency:
        return {{"$currency", value.As<Currency>().ToFixedText()}};
      case Kind::Date:
        return WriteDate(value.As<Date>());
      case Kind::String:
        return value.As<std::string>();
      case Kind::Array:
        return WriteArray(value.As<Array>());
      case Kind::Object:
        return WriteObject(value.As<ObjectRef>());
    }
    throw Error(automation::error_number::kInternalError, "Talvex.Gateway",
                "Internal error: a value of no kind");
  }

 private:
  // A container takes three levels of JSON, {"$dictionary": [[key, item]]}. Some levels are left for the
  // message around the value, so that a client can send back what it was given.
  static constexpr int kDeepestContainer = kDeepestJson / 3 - 4;

  Json WriteArray(const Array& array) {
    Json items = Json::array();
    for (const Variant& item : array.Items()) items.push_back(Write(item));
    return items;
  }

  Json WriteObject(const ObjectRef& object) {
    if (object == nullptr) return Write(Variant());
    if (IsWrittenWhole(*object)) {
      if (const auto* dictionary = dynamic_cast<const Dictionary*>(object.get()))
        return WriteItems(*dictionary);
      if (const auto* collection = dynamic_cast<const Collection*>(object.get()))
        return WriteItems(*collection);
    }
    return {{"$object", objects_.Add(object)}};
  }

  // Containers can hold themselves, and each other many times over: writing each of them once keeps the
  // answer finite.
  bool IsWrittenWhole(const automation::Object& container) {
    return depth_ < kDeepestContainer && !objects_.NumberOf(container) && written_.insert(&container).second;
  }

  Json WriteItems(const Dictionary& dictionary) {
    Json pairs = Json::array();
    ++depth_;
    for (const auto& [key, item] : dictionary.Entries()) pairs.push_back(Json::array({key, Write(item)}));
    --depth_;
    return {{"$dictionary", std::move(pairs)}};
  }

  Json WriteItems(const Collection& collection) {
    Json pairs = Json::array();
    ++depth_;
    for (const auto& [key, item] : collection.Entries()) {
      pairs.push_back(Json::array({key ? Json(*key) : Json(), Write(item)}));
    }
    --depth_;
    return {{"$collection", std::move(pairs)}};
  }

  ObjectTable& objects_;
  std::unordered_set<const automation::Object*> written_;
  int depth_ = 0;
};

}  // namespace

Json WriteValue(const Variant& value, ObjectTable& objects) { return Writer(objects).Write(value); }

}  // namespace talvex::apps::rpc
