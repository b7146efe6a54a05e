// The length of error texts, which nest as deep as the calls that failed.
#pragma once

#include <cstddef>
#include <string>

namespace talvex::Lib_ErrorHandling {

// No trace is longer, in bytes.
inline constexpr std::size_t kLongestTrace = 64UL * 1024;
// An entry of the log shows no more levels: every level writes an entry about itself and those below.
inline constexpr std::size_t kMostLevelsInAnEntry = 32;

// The text of a trace, as Err_FormatMessage nests them. One that is longer than kLongestTrace keeps its first
// levels, those nearest to the caller, and its last ones, where it failed, and says between them how many
// were left out ("(levels left out: 1968)"); what is very long within a level is shortened in its middle in
// the same way ("(bytes left out: 70000)"). A trace that was shortened before can grow and be shortened
// again.
[[nodiscard]] std::string BoundedTrace(std::string text);

// The same for an entry of the log, which is also shortened when it has more than kMostLevelsInAnEntry
// levels.
[[nodiscard]] std::string BoundedEntry(std::string text);

}  // namespace talvex::Lib_ErrorHandling
