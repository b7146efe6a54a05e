// JSON texts as the gateway and the command line read and write them.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace talvex::apps::rpc {

using Json = nlohmann::json;

// A text that is no JSON, or JSON beyond the limits below.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// How many arrays and objects may stand one inside the other. Whoever walks a JSON value does so by
// recursion, and nobody's text may decide how much stack that takes.
inline constexpr int kDeepestJson = 200;

// How many values a text may hold, an array or object counted as one beside what is in it. A value that takes
// two characters in the text takes a hundred times that in memory.
inline constexpr std::size_t kMostJsonValues = 1000000;

// Raises JsonError, also for a text that is not UTF-8 and for a number too large for a double.
[[nodiscard]] Json ParseJson(std::string_view text);

// The value as one line. Bytes of a text that are not UTF-8 become the replacement character, so that whoever
// reads the line always reads JSON.
[[nodiscard]] std::string JsonLine(const Json& json);

// The beginning of JsonLine, short enough for a message that names the value.
[[nodiscard]] std::string ShownJson(const Json& json);

}  // namespace talvex::apps::rpc
