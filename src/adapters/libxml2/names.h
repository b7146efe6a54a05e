// What may be a name and what may be a text. The library itself takes bad ones, or drops them silently.
#pragma once

#include <string>
#include <string_view>

namespace talvex::adapters::libxml2 {

inline constexpr std::string_view kSource = "Talvex.Platform.Xml";

// A name in its two parts; the prefix is empty when there is none.
struct SplitName {
  std::string prefix;
  std::string local;
};

// Raises 5, "Invalid procedure call: <reason>".
[[noreturn]] void RaiseInvalid(const std::string& reason);

// Raises 5 for what is no name of an element or an attribute.
[[nodiscard]] SplitName CheckedName(const std::string& name);

// Whether the text is UTF-8 and holds no character that XML does not allow, such as most control characters.
[[nodiscard]] bool IsXmlText(std::string_view text);

// Raises 5 for any other text.
void CheckText(std::string_view text);

}  // namespace talvex::adapters::libxml2
