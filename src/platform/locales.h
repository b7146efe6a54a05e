// The ids of languages in the suite's table of texts.
#pragma once

#include <cstdint>

namespace talvex::platform::suite {

// That of the empty user. What has no text for nobody in particular is said in English.
inline constexpr std::int16_t kLocaleOfNobody = 0;
inline constexpr std::int16_t kEnglish = 1033;

}  // namespace talvex::platform::suite
