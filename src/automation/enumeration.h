// Public enumerations: declared once, known to C++, to late-bound callers and to the documentation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace talvex::automation {

// The name of an enumeration and its members with their numbers, in the order of their declaration.
class EnumerationInfo {
 public:
  // `members` is the declaration's own text: "Approved = 1, NotYetApproved = 2".
  EnumerationInfo(std::string_view name, std::string_view members);

  [[nodiscard]] const std::string& Name() const noexcept { return name_; }
  [[nodiscard]] const std::vector<std::pair<std::string, std::int32_t>>& Members() const noexcept {
    return members_;
  }
  // The number of the member of that name, without regard to case; nothing when there is no such member.
  [[nodiscard]] std::optional<std::int32_t> NumberOf(std::string_view member) const noexcept;

 private:
  std::string name_;
  std::vector<std::pair<std::string, std::int32_t>> members_;
};

}  // namespace talvex::automation

// Declares `enum class Name : Integer { ... }`, each member written "Member = number". Values without a
// member are allowed in such an enumeration: callers pass numbers, and the operation judges them.
#define TALVEX_ENUM(Name, Integer, ...)                                                         \
  enum class Name : Integer { __VA_ARGS__ };                                                    \
  [[nodiscard]] inline const ::talvex::automation::EnumerationInfo& DescribeEnumeration(Name) { \
    static const ::talvex::automation::EnumerationInfo info(#Name, #__VA_ARGS__);               \
    return info;                                                                                \
  }                                                                                             \
  static_assert(true, "a semicolon follows")
