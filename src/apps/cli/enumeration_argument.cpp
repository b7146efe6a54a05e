#include "apps/cli/enumeration_argument.h"

#include <cmath>

#include "apps/cli/layout.h"
#include "automation/class_info.h"
#include "automation/conversions.h"
#include "automation/text.h"

namespace talvex::apps {

const automation::EnumerationInfo& EnumerationOf(Session& session, std::string_view class_name,
                                                 std::string_view method_name) {
  const automation::ClassInfo* const info = session.Host().Environment()->classes->Find(class_name);
  const automation::Method* const method = info == nullptr ? nullptr : info->FindMethod(method_name);
  if (method != nullptr) {
    for (const automation::Parameter& parameter : method->parameters) {
      if (parameter.enumeration != nullptr) return *parameter.enumeration;
    }
  }
  throw Failure(std::string(class_name) + " does not say which types " + std::string(method_name) + " takes");
}

Member ReadMember(const automation::EnumerationInfo& enumeration, const std::string& text,
                  const std::string& what) {
  const auto number = automation::ParseNumber(text);
  const bool whole = number && std::trunc(*number) == *number && std::abs(*number) <= INT32_MAX;
  std::string names;
  for (const auto& [name, value] : enumeration.Members()) {
    if (automation::SameFolded(name, text) || (whole && *number == value)) return {value, name};
    names.append(names.empty() ? "" : ", ").append(name);
  }
  if (whole) return {static_cast<std::int32_t>(*number), text};
  throw UsageError("'" + Shortened(text) + "' is no " + what + "; the types are " + names);
}

}  // namespace talvex::apps
