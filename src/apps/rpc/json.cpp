#include "apps/rpc/json.h"

namespace talvex::apps::rpc {

namespace {

bool IsContinuation(char c) noexcept { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// Looks on while a text is parsed, and ends it when there is too much of it.
class Limits {
 public:
  bool operator()(int depth, Json::parse_event_t event, Json& /*parsed*/) {
    using Event = Json::parse_event_t;
    const bool opens = event == Event::array_start || event == Event::object_start;
    if (opens && depth >= kDeepestJson) {
      throw JsonError("more than " + std::to_string(kDeepestJson) + " arrays and objects inside each other");
    }
    if ((opens || event == Event::value) && ++values_ > kMostJsonValues) {
      throw JsonError("more than " + std::to_string(kMostJsonValues) + " values");
    }
    return true;
  }

 private:
  std::size_t values_ = 0;
};

}  // namespace

Json ParseJson(std::string_view text) {
  // The parser takes a zero byte for the end of the text and would not look at what follows it.
  const std::size_t zero = text.find('\0');
  if (zero != std::string_view::npos) throw JsonError("a zero byte at position " + std::to_string(zero + 1));
  try {
    return Json::parse(text.begin(), text.end(), Limits());
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
