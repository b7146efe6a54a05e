#include "apps/rpc/calls.h"

#include <algorithm>
#include <string>
#include <vector>

#include "automation/class_info.h"
#include "automation/text.h"

namespace talvex::apps::rpc {

using automation::Method;
using automation::Parameter;
using automation::Variant;

namespace {

// The arguments of one call by position; those that were not set are left out.
class ArgumentList {
 public:
  explicit ArgumentList(std::size_t count) : values_(count), pointers_(count) {}

  void Set(std::size_t position, Variant value) {
    values_[position] = std::move(value);
    pointers_[position] = &values_[position];
  }
  [[nodiscard]] bool IsSet(std::size_t position) const { return pointers_[position] != nullptr; }
  [[nodiscard]] automation::Arguments Pointers() const { return pointers_; }

  // What stands at a position, Empty for an argument that was left out.
  [[nodiscard]] Variant Value(std::size_t position) const {
    return position < values_.size() ? values_[position] : Variant();
  }

 private:
  std::vector<Variant> values_;
  std::vector<Variant*> pointers_;
};

ArgumentList ReadByPosition(const Json& arguments, const ObjectTable& objects) {
  ArgumentList list(arguments.size());
  for (std::size_t i = 0; i < arguments.size(); ++i) list.Set(i, ReadValue(arguments[i], objects));
  return list;
}

std::size_t PositionOf(const Method& method, const std::string& name) {
  const auto found =
      std::find_if(method.parameters.begin(), method.parameters.end(),
                   [&](const Parameter& parameter) { return automation::SameFolded(parameter.name, name); });
  if (found == method.parameters.end()) {
    throw InvalidParams(method.name + " has no parameter " + ShownJson(name));
  }
  return static_cast<std::size_t>(found - method.parameters.begin());
}

ArgumentList ReadByName(const Method& method, const Json& arguments, const ObjectTable& objects) {
  ArgumentList list(method.parameters.size());
  for (const auto& [name, value] : arguments.items()) {
    const std::size_t position = PositionOf(method, name);
    if (list.IsSet(position)) throw InvalidParams("the argument " + ShownJson(name) + " comes twice");
    list.Set(position, ReadValue(value, objects));
  }
  return list;
}

ArgumentList ReadArguments(const Method& method, const Json& arguments, const ObjectTable& objects) {
  if (arguments.is_array()) return ReadByPosition(arguments, objects);
  if (arguments.is_object()) return ReadByName(method, arguments, objects);
  throw InvalidParams("arguments stand in an array or in an object, not " + ShownJson(arguments));
}

Json WriteOut(const Method& method, const ArgumentList& list, ObjectTable& objects) {
  Json out = Json::object();
  for (std::size_t i = 0; i < method.parameters.size(); ++i) {
    const Parameter& parameter = method.parameters[i];
    if (parameter.by_reference) out[parameter.name] = WriteValue(list.Value(i), objects);
  }
  return out;
}

}  // namespace

Json CallMethod(automation::Object& object, std::string_view method, const Json& arguments,
                ObjectTable& objects) {
  const Method* found = object.Class().FindMethod(method);
  if (found == nullptr) return WriteValue(object.Invoke(method, {}), objects);  // Which raises 438.
  const ArgumentList list = ReadArguments(*found, arguments, objects);
  const Variant result = object.Invoke(method, list.Pointers());
  return {{"result", WriteValue(result, objects)}, {"out", WriteOut(*found, list, objects)}};
}

}  // namespace talvex::apps::rpc
