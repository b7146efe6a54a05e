#include "automation/enumeration.h"

#include <charconv>

#include "automation/text.h"

namespace talvex::automation {

EnumerationInfo::EnumerationInfo(std::string_view name, std::string_view members) : name_(name) {
  while (!members.empty()) {
    const std::size_t comma = members.find(',');
    const std::string_view member = members.substr(0, comma);
    members.remove_prefix(comma == std::string_view::npos ? members.size() : comma + 1);
    const std::size_t equals = member.find('=');
    if (equals == std::string_view::npos) continue;  // A comma after the last member.
    const std::string_view number = Trimmed(member.substr(equals + 1));
    std::int32_t value = 0;
    std::from_chars(number.data(), number.data() + number.size(), value);
    members_.emplace_back(Trimmed(member.substr(0, equals)), value);
  }
}

std::optional<std::int32_t> EnumerationInfo::NumberOf(std::string_view member) const noexcept {
  for (const auto& [name, number] : members_) {
    if (SameFolded(name, member)) return number;
  }
  return std::nullopt;
}

}  // namespace talvex::automation
