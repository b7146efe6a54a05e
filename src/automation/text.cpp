#include "automation/text.h"

#include <algorithm>
#include <cstdint>

namespace talvex::automation {

std::string Folded(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), FoldCase);
  return result;
}

std::string Raised(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), RaiseCase);
  return result;
}

int CompareFolded(std::string_view a, std::string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    const auto left = static_cast<unsigned char>(FoldCase(a[i]));
    const auto right = static_cast<unsigned char>(FoldCase(b[i]));
    if (left != right) return left < right ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

bool SameFolded(std::string_view a, std::string_view b) noexcept {
  return a.size() == b.size() && CompareFolded(a, b) == 0;
}

std::string_view Trimmed(std::string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string Replaced(std::string_view text, std::string_view what, std::string_view with) {
  std::string result;
  result.reserve(text.size());
  std::size_t from = 0;
  for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, from)) {
    result.append(text, from, at - from).append(with);
    from = at + what.size();
  }
  return result.append(text, from);
}

namespace {

// Length of the well-formed sequence at the start of `text`, 0 when there is none.
std::size_t SequenceLength(std::string_view text) noexcept {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto continues = [&](std::size_t i) { return i < text.size() && (byte(i) & 0xC0U) == 0x80U; };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return continues(1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    if (!continues(1) || !continues(2)) return 0;
    const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
    const bool surrogate = lead == 0xED && byte(1) > 0x9F;
    return overlong || surrogate ? 0 : 3;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    if (!continues(1) || !continues(2) || !continues(3)) return 0;
    const bool overlong = lead == 0xF0 && byte(1) < 0x90;
    const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
    return overlong || beyond ? 0 : 4;
  }
  return 0;
}

}  // namespace

bool IsUtf8(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::size_t CharacterCount(std::string_view text) noexcept {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::size_t FoldedHash::operator()(std::string_view text) const noexcept {
  // FNV-1a over the folded bytes.
  std::uint64_t hash = 14695981039346656037ULL;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(FoldCase(c))) * 1099511628211ULL;
  return static_cast<std::size_t>(hash);
}

}  // namespace talvex::automation
