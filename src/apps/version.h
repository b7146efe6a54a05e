#pragma once

#include <string_view>

namespace talvex::apps {

// Of the program and of everything in it.
inline constexpr std::string_view kVersion = "0.1.0";

}  // namespace talvex::apps
