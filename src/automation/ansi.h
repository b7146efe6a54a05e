// Texts in the character set of older programs.
#pragma once

#include <string>
#include <string_view>

namespace talvex::automation {

// A UTF-8 text in Windows-1252, with "?" for every character that it lacks and for every byte that is not
// UTF-8.
[[nodiscard]] std::string ToAnsi(std::string_view utf8);

}  // namespace talvex::automation
