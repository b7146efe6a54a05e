#include "adapters/odbc/wide_text.h"

#include <cstddef>
#include <cstdint>

namespace talvex::adapters::odbc {

namespace {

constexpr std::uint32_t kBeyondFirstPlane = 0x10000;
constexpr std::uint32_t kHighHalf = 0xD800;
constexpr std::uint32_t kLowHalf = 0xDC00;
constexpr std::uint32_t kBehindHalves = 0xE000;
constexpr std::uint32_t kReplacement = 0xFFFD;

// Reads one character of well-formed UTF-8 and moves past it.
std::uint32_t NextCharacter(std::string_view text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) return lead;
  const int more = lead >= 0xF0 ? 3 : (lead >= 0xE0 ? 2 : 1);
  std::uint32_t character = lead & (0x3FU >> more);
  for (int i = 0; i < more && at < text.size(); ++i) {
    character = (character << 6U) | (static_cast<unsigned char>(text[at++]) & 0x3FU);
  }
  return character;
}

void AppendCharacter(std::string& to, std::uint32_t character) {
  const auto tail = [&](unsigned shift) { to += static_cast<char>(0x80U | ((character >> shift) & 0x3FU)); };
  if (character < 0x80) {
    to += static_cast<char>(character);
  } else if (character < 0x800) {
    to += static_cast<char>(0xC0U | (character >> 6U));
    tail(0);
  } else if (character < kBeyondFirstPlane) {
    to += static_cast<char>(0xE0U | (character >> 12U));
    tail(6);
    tail(0);
  } else {
    to += static_cast<char>(0xF0U | (character >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

WideText ToWide(std::string_view text) {
  WideText wide;
  wide.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::uint32_t character = NextCharacter(text, at);
    if (character < kBeyondFirstPlane) {
      wide.push_back(static_cast<SQLWCHAR>(character));
    } else {
      const std::uint32_t pair = character - kBeyondFirstPlane;
      wide.push_back(static_cast<SQLWCHAR>(kHighHalf + (pair >> 10U)));
      wide.push_back(static_cast<SQLWCHAR>(kLowHalf + (pair & 0x3FFU)));
    }
  }
  return wide;
}

void AppendNarrow(std::string& to, std::span<const SQLWCHAR> text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::uint32_t unit = text[at];
    if (unit < kHighHalf || unit >= kBehindHalves) {
      AppendCharacter(to, unit);
      continue;
    }
    const std::uint32_t next = at + 1 < text.size() ? text[at + 1] : 0;
    if (unit >= kLowHalf || next < kLowHalf || next >= kBehindHalves) {
      AppendCharacter(to, kReplacement);
      continue;
    }
    AppendCharacter(to, kBeyondFirstPlane + ((unit - kHighHalf) << 10U) + (next - kLowHalf));
    ++at;
  }
}

std::string ToNarrow(std::span<const SQLWCHAR> text) {
  std::string narrow;
  AppendNarrow(narrow, text);
  return narrow;
}

}  // namespace talvex::adapters::odbc
