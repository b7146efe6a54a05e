#include "automation/ansi.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace talvex::automation {

namespace {

// The characters at 0x80 to 0x9F, where the set differs from the first 256 code points; 0 where it has none.
constexpr std::array<std::uint32_t, 32> kFrom80 = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;

// The code point at the beginning of the text, which it is taken from; one byte of what is no UTF-8.
std::uint32_t TakeCharacter(std::string_view& text) {
  const auto byte = [&](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
  };
  const std::uint32_t first = byte(0);
  const std::size_t length = first < 0x80         ? 1
                             : (first >> 5) == 6  ? 2
                             : (first >> 4) == 14 ? 3
                             : (first >> 3) == 30 ? 4
                                                  : 0;
  std::uint32_t character = length <= 1 ? first : first & (0x7FU >> length);
  bool whole = length != 0 && length <= text.size();
  for (std::size_t i = 1; whole && i < length; ++i) {
    whole = (byte(i) & 0xC0U) == 0x80;
    character = (character << 6) | (byte(i) & 0x3FU);
  }
  text.remove_prefix(whole ? length : 1);
  return whole ? character : kNoCharacter;
}

char AnsiOf(std::uint32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) return static_cast<char>(character);
  const auto* const found = std::find(kFrom80.begin(), kFrom80.end(), character);
  return character == 0 || found == kFrom80.end() ? '?' : static_cast<char>(0x80 + (found - kFrom80.begin()));
}

}  // namespace

std::string ToAnsi(std::string_view utf8) {
  std::string ansi;
  ansi.reserve(utf8.size());
  while (!utf8.empty()) ansi += AnsiOf(TakeCharacter(utf8));
  return ansi;
}

}  // namespace talvex::automation
