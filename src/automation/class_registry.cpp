#include "automation/class_registry.h"

#include <algorithm>

namespace talvex::automation {

void ClassRegistry::Register(std::string_view name, const ClassInfo& info, Maker maker) {
  entries_.insert_or_assign(std::string(name), Entry{&info, std::move(maker)});
}

ObjectRef ClassRegistry::Create(std::string_view name) const {
  const auto found = entries_.find(name);
  if (found == entries_.end()) {
    throw Error(error_number::kCannotCreateObject, kAutomationSource,
                "Component can't create object: there is no class '" + std::string(name) + "'");
  }
  return found->second.maker();
}

const ClassInfo* ClassRegistry::Find(std::string_view name) const {
  const auto found = entries_.find(name);
  return found == entries_.end() ? nullptr : found->second.info;
}

std::vector<std::string> ClassRegistry::Names() const {
  std::vector<std::string> names;
  for (const auto& [name, entry] : entries_) names.push_back(name);
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return CompareFolded(a, b) < 0; });
  return names;
}

std::vector<std::string> ClassRegistry::Implementing(std::string_view interface_name) const {
  const std::string prefix = std::string(interface_name) + "_";
  const auto is_member = [&](const Method& method) {
    return SameFolded(std::string_view(method.name).substr(0, prefix.size()), prefix);
  };
  std::vector<std::string> names = Names();
  std::erase_if(names, [&](const std::string& name) {
    const std::vector<Method>& methods = Find(name)->Methods();
    return std::none_of(methods.begin(), methods.end(), is_member);
  });
  return names;
}

}  // namespace talvex::automation
