#include "automation/class_registry.h"

#include <algorithm>

namespace talvex::automation {

void ClassRegistry::Register(std::string_view name, const ClassInfo& info, Maker maker) {
  entries_.insert_or_assign(std::string(name), Entry{&info, std::move(maker)});
}

ObjectRef ClassRegistry::Create(std::string_view name) const {
  const auto found = entries_.find(name);
  if (found == entries_.end()) {
    throw Error(error_number::kCannotCreateObject, "Talvex.Automation",
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

}  // namespace talvex::automation
