#include "apps/rpc/describe.h"

namespace talvex::apps::rpc {

namespace {

Json DescribeMembers(const automation::EnumerationInfo& enumeration) {
  Json members = Json::array();
  for (const auto& [name, number] : enumeration.Members())
    members.push_back({{"name", name}, {"number", number}});
  return members;
}

Json DescribeParameter(const automation::Parameter& parameter) {
  Json described = {{"name", parameter.name},
                    {"type", parameter.type},
                    {"direction", parameter.by_reference ? "in/out" : "in"},
                    {"optional", parameter.optional}};
  if (parameter.enumeration != nullptr) described["enumeration"] = DescribeMembers(*parameter.enumeration);
  return described;
}

Json DescribeMethod(const automation::Method& method) {
  Json parameters = Json::array();
  for (const automation::Parameter& parameter : method.parameters)
    parameters.push_back(DescribeParameter(parameter));
  return {{"name", method.name},
          {"documentation", method.documentation},
          {"result", method.result.empty() ? Json() : Json(method.result)},
          {"parameters", std::move(parameters)}};
}

Json DescribeProperty(const automation::Property& property) {
  return {{"name", property.name},
          {"documentation", property.documentation},
          {"type", property.type},
          {"writable", property.set != nullptr}};
}

}  // namespace

Json DescribeClasses(const automation::ClassRegistry& classes) {
  Json described = Json::array();
  for (const std::string& name : classes.Names()) {
    described.push_back({{"class", name}, {"documentation", classes.Find(name)->Documentation()}});
  }
  return {{"classes", std::move(described)}};
}

Json DescribeClass(const automation::ClassInfo& info) {
  Json methods = Json::array();
  for (const automation::Method& method : info.Methods()) methods.push_back(DescribeMethod(method));
  Json properties = Json::array();
  for (const automation::Property& property : info.Properties())
    properties.push_back(DescribeProperty(property));
  return {{"class", info.Name()},
          {"documentation", info.Documentation()},
          {"methods", std::move(methods)},
          {"properties", std::move(properties)}};
}

}  // namespace talvex::apps::rpc
