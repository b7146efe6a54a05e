#include "apps/rpc/json.h"

namespace talvex::apps::rpc {

namespace {

bool IsContinuation(char c) noexcept { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// Raises JsonError for a text beyond the limits. This is looked at before the text is parsed: the parser
// itself would build whatever it is given, and checks called from inside it make it slow beyond measure.
void CheckLimits(std::string_view text) {
  int depth = 0;
  std::size_t values = 1;
  bool in_string = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (in_string) {
      if (c == '\\') ++i;
      if (c == '"') in_string = false;
      continue;
    }
    if (c == '"') in_string = true;
    if (c == '[' || c == '{') ++depth;
    if (c == ']' || c == '}') --depth;
    if (c == '[' || c == '{' || c == ',') ++values;
    if (depth > kDeepestJson) {
      throw JsonError("more than " + std::to_string(kDeepestJson) + " arrays and objects inside each other");
    }
    if (values > kMostJsonValues) throw JsonError("more than " + std::to_string(kMostJsonValues) + " values");
  }
}

}  // namespace

Json ParseJson(std::string_view text) {
  // The parser takes a zero byte for the end of the text and would not look at what follows it.
  const std::size_t zero = text.find('\0');
  if (zero != std::string_view::npos) throw JsonError("a zero byte at position " + std::to_string(zero + 1));
  CheckLimits(text);
  try {
    return Json::parse(text.begin(), text.end());
  } catch (const Json::parse_error& error) {
    // The parser's own message repeats the text, of any length, up to the fault.
    throw JsonError("no JSON from byte " + std::to_string(error.byte) + " on");
  } catch (const Json::out_of_range&) {
    throw JsonError("a number too large for a double");
  }
}

std::string JsonLine(const Json& json) {
  constexpr int kOneLine = -1;
  return json.dump(kOneLine, ' ', false, Json::error_handler_t::replace);
}

std::string ShownJson(const Json& json) {
  constexpr std::size_t kMost = 60;
  std::string line = JsonLine(json);
  if (line.size() <= kMost) return line;
  std::size_t end = kMost;
  while (end > 0 && IsContinuation(line[end])) --end;
  return line.substr(0, end) + "...";
}

}  // namespace talvex::apps::rpc
