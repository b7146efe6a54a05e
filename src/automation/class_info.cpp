#include "automation/class_info.h"

namespace talvex::automation {

namespace {

bool IsNameCharacter(char c) noexcept {
  const char folded = FoldCase(c);
  return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

// The name at the end of one parameter's declaration, before its default: "Date& ioDate = {}" gives "ioDate".
std::string NameAtEnd(std::string_view parameter) {
  parameter = parameter.substr(0, parameter.find('='));
  std::size_t end = parameter.size();
  while (end > 0 && !IsNameCharacter(parameter[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && IsNameCharacter(parameter[begin - 1])) --begin;
  return std::string(parameter.substr(begin, end - begin));
}

[[noreturn]] void RaiseNoSuchMember(const ClassInfo& info, std::string_view member) {
  throw Error(error_number::kNoSuchMember, kAutomationSource,
              "Object doesn't support this property or method: " + info.Name() + "." + std::string(member));
}

}  // namespace

std::vector<std::string> ParameterNames(std::string_view declaration) {
  std::vector<std::string> names;
  int depth = 0;
  std::string_view inside = declaration.substr(1, declaration.size() - 2);
  std::size_t from = 0;
  for (std::size_t at = 0; at <= inside.size(); ++at) {
    const char c = at < inside.size() ? inside[at] : ',';
    if (c == '<' || c == '(' || c == '{') ++depth;
    if (c == '>' || c == ')' || c == '}') --depth;
    if (c != ',' || depth != 0) continue;
    std::string name = NameAtEnd(inside.substr(from, at - from));
    if (!name.empty()) names.push_back(std::move(name));
    from = at + 1;
  }
  return names;
}

void RaiseForArgument(const Parameter& parameter) {
  ErrorState state = CurrentExceptionState();
  state.description += " (argument " + parameter.name + ")";
  throw Error(std::move(state));
}

const Method* ClassInfo::FindMethod(std::string_view name) const {
  const auto found = method_index_.find(name);
  return found == method_index_.end() ? nullptr : &methods_[found->second];
}

const Property* ClassInfo::FindProperty(std::string_view name) const {
  const auto found = property_index_.find(name);
  return found == property_index_.end() ? nullptr : &properties_[found->second];
}

bool ClassInfo::AddMethod(Method method) {
  method_index_.emplace(method.name, methods_.size());
  methods_.push_back(std::move(method));
  return true;
}

bool ClassInfo::AddProperty(Property property) {
  property_index_.emplace(property.name, properties_.size());
  properties_.push_back(std::move(property));
  return true;
}

Variant Object::Invoke(std::string_view method, Arguments arguments) {
  const Method* found = Class().FindMethod(method);
  if (found == nullptr) RaiseNoSuchMember(Class(), method);
  if (arguments.size() > found->parameters.size()) {
    throw Error(error_number::kWrongNumberOfArguments, kAutomationSource,
                "Wrong number of arguments: " + Class().Name() + "." + found->name + " takes " +
                    std::to_string(found->parameters.size()));
  }
  return found->invoke(*this, arguments, *found);
}

Variant Object::Get(std::string_view property) {
  const Property* found = Class().FindProperty(property);
  if (found == nullptr) RaiseNoSuchMember(Class(), property);
  return found->get(*this);
}

void Object::Set(std::string_view property, const Variant& value) {
  const Property* found = Class().FindProperty(property);
  if (found == nullptr || found->set == nullptr) RaiseNoSuchMember(Class(), property);
  found->set(*this, value);
}

}  // namespace talvex::automation
