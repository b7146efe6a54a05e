#include "services/error_trace.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace talvex::Lib_ErrorHandling {

namespace {

constexpr std::string_view kHeadBegin = "\r\nERROR 0x";
constexpr std::string_view kHeadEnd = "\r\n DESC: ";
constexpr std::string_view kTailEnd = ".\r\n";
constexpr std::string_view kInformation = ".\r\n INFO: ";
constexpr std::string_view kLevelsLeftOut = "(levels left out: ";
constexpr std::string_view kBytesLeftOut = "(bytes left out: ";

// Of a trace that is shortened, what is kept at either end and what is kept of one part. Far below the limit,
// so that a trace which goes on growing is not shortened at every level.
constexpr std::size_t kKeptAtEitherEnd = 12UL * 1024;
constexpr std::size_t kKeptOfOnePart = 6UL * 1024;

// A trace in its parts: the heads of its levels, what the last level is about, and their tails. The tail of a
// level stands behind everything that is nested in it.
struct Trace {
  std::vector<std::string_view> heads;  // From the first level to the last.
  std::string_view core;
  std::vector<std::string_view> tails;  // In the order of the heads.
  std::uint64_t left_out = 0;           // Levels that were left out when it was shortened before.
};

// Cuts off and returns the head of the level that a text begins with; empty when it begins with none.
std::string_view TakeHead(std::string_view& text) {
  if (!text.starts_with(kHeadBegin)) return {};
  const std::size_t end = text.find(kHeadEnd);
  if (end == std::string_view::npos) return {};
  const std::string_view head = text.substr(0, end + kHeadEnd.size());
  text.remove_prefix(head.size());
  return head;
}

// Cuts off the remark about levels left out, if a text begins with one, and returns their number.
std::uint64_t TakeLevelsLeftOut(std::string_view& text) {
  if (!text.starts_with(kLevelsLeftOut)) return 0;
  std::uint64_t levels = 0;
  const char* const digits = text.data() + kLevelsLeftOut.size();
  const auto [end, fault] = std::from_chars(digits, text.data() + text.size(), levels);
  const auto length = static_cast<std::size_t>(end - text.data());
  if (fault != std::errc() || !text.substr(length).starts_with(')')) return 0;
  text.remove_prefix(length + 1);
  return levels;
}

// Cuts off and returns the tail of the level that a text ends with; empty when it ends with none.
std::string_view TakeTail(std::string_view& text) {
  if (!text.ends_with(kTailEnd)) return {};
  std::size_t begin = text.size() - kTailEnd.size();
  const std::string_view before = text.substr(0, begin);
  if (!before.ends_with(kTailEnd)) {
    const std::size_t information = before.rfind(kInformation);
    if (information != std::string_view::npos) begin = information;
  }
  const std::string_view tail = text.substr(begin);
  text.remove_suffix(tail.size());
  return tail;
}

Trace Parsed(std::string_view text) {
  Trace trace;
  for (std::string_view head = TakeHead(text); !head.empty(); head = TakeHead(text)) {
    trace.heads.push_back(head);
    trace.left_out += TakeLevelsLeftOut(text);
  }
  while (trace.tails.size() < trace.heads.size()) {
    const std::string_view tail = TakeTail(text);
    if (tail.empty()) break;
    trace.tails.push_back(tail);
  }
  trace.tails.resize(trace.heads.size());
  trace.core = text;
  return trace;
}

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// A part of a trace; of a very long one its beginning and its end, no character taken apart.
void AppendPart(std::string& text, std::string_view part) {
  if (part.size() <= kKeptOfOnePart) {
    text += part;
    return;
  }
  constexpr std::size_t kRemark = 64;  // More than the remark needs, so that the part fits the next time.
  std::size_t first = (kKeptOfOnePart - kRemark) / 2;
  while (first > 0 && IsContinuation(part[first])) --first;
  std::size_t last = part.size() - (kKeptOfOnePart - kRemark) / 2;
  while (last < part.size() && IsContinuation(part[last])) ++last;
  text.append(part.substr(0, first));
  text.append(kBytesLeftOut).append(std::to_string(last - first)).append(")");
  text.append(part.substr(last));
}

std::size_t KeptSize(std::string_view part) { return std::min(part.size(), kKeptOfOnePart); }

// How many levels to keep, going inwards from one end: at least one, and no more than fit.
template <class Level>
std::size_t KeptLevels(std::size_t levels, std::size_t most, const Level& size_of_level) {
  std::size_t size = 0;
  for (std::size_t kept = 0; kept < std::min(levels, most); ++kept) {
    size += size_of_level(kept);
    if (size > kKeptAtEitherEnd) return std::max<std::size_t>(kept, 1);
  }
  return std::min(levels, most);
}

std::string Shortened(const Trace& trace, std::size_t most_at_either_end) {
  const std::size_t levels = trace.heads.size();
  const auto size_of = [&](std::size_t level) {
    return KeptSize(trace.heads[level]) + KeptSize(trace.tails[level]);
  };
  const std::size_t first = KeptLevels(levels, most_at_either_end, size_of);
  const std::size_t last =
      KeptLevels(levels - first, most_at_either_end, [&](std::size_t i) { return size_of(levels - 1 - i); });
  const std::size_t resumed = levels - last;

  std::string text;
  for (std::size_t i = 0; i < first; ++i) AppendPart(text, trace.heads[i]);
  const std::uint64_t left_out = trace.left_out + (resumed - first);
  if (left_out > 0) text.append(kLevelsLeftOut).append(std::to_string(left_out)).append(")");
  for (std::size_t i = resumed; i < levels; ++i) AppendPart(text, trace.heads[i]);
  AppendPart(text, trace.core);
  // The tails were taken from the end: the first is that of the first level.
  for (std::size_t i = levels; i-- > resumed;) AppendPart(text, trace.tails[i]);
  for (std::size_t i = first; i-- > 0;) AppendPart(text, trace.tails[i]);
  return text;
}

}  // namespace

std::string BoundedTrace(std::string text) {
  if (text.size() <= kLongestTrace) return text;
  return Shortened(Parsed(text), std::numeric_limits<std::size_t>::max());
}

std::string BoundedEntry(std::string text) {
  const Trace trace = Parsed(text);
  if (text.size() <= kLongestTrace && trace.heads.size() <= kMostLevelsInAnEntry) return text;
  return Shortened(trace, kMostLevelsInAnEntry / 2);
}

}  // namespace talvex::Lib_ErrorHandling
