#include "apps/cli/layout.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "automation/text.h"

namespace talvex::apps {

namespace {

// Cuts off and returns the first character with its bytes, or, where the text is not UTF-8, its first byte
// and no character.
struct Character {
  char32_t code = 0;
  std::string_view bytes;
  bool valid = false;
};

std::size_t LengthOf(unsigned char lead) noexcept {
  if (lead < 0x80) return 1;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

Character NextCharacter(std::string_view& rest) noexcept {
  const auto lead = static_cast<unsigned char>(rest.front());
  const std::size_t length = std::min(LengthOf(lead), rest.size());
  Character character;
  character.valid = automation::IsUtf8(rest.substr(0, length));
  character.bytes = rest.substr(0, character.valid ? length : 1);
  rest.remove_prefix(character.bytes.size());
  if (!character.valid) return character;
  constexpr std::array<unsigned, 5> kLeadBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
  character.code = lead & kLeadBits[length];
  for (const char byte : character.bytes.substr(1)) {
    character.code = (character.code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return character;
}

struct Range {
  char32_t first;
  char32_t last;
};

template <std::size_t N>
bool IsIn(const std::array<Range, N>& ranges, char32_t code) noexcept {
  return std::any_of(ranges.begin(), ranges.end(),
                     [&](const Range& range) { return code >= range.first && code <= range.last; });
}

// Control characters, the marks that turn the direction of writing among them.
constexpr std::array<Range, 5> kObeyed = {
    {{0x00, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}}};
constexpr std::array<Range, 5> kNarrow = {
    {{0x0300, 0x036F}, {0x1AB0, 0x1AFF}, {0x200B, 0x200D}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}}};
constexpr std::array<Range, 8> kWide = {{{0x1100, 0x115F},
                                         {0x2E80, 0xA4CF},
                                         {0xAC00, 0xD7A3},
                                         {0xF900, 0xFAFF},
                                         {0xFE30, 0xFE6F},
                                         {0xFF00, 0xFF60},
                                         {0x1F300, 0x1FAFF},
                                         {0x20000, 0x3FFFD}}};

std::size_t WidthOf(char32_t code) noexcept {
  if (IsIn(kNarrow, code)) return 0;
  return IsIn(kWide, code) ? 2 : 1;
}

std::vector<std::size_t> ColumnWidths(const std::vector<Table::Row>& rows) {
  std::vector<std::size_t> widths;
  for (const Table::Row& row : rows) {
    if (widths.size() < row.size()) widths.resize(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth(row[i].text));
  }
  return widths;
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Character character = NextCharacter(text);
    const bool shown = character.valid && !IsIn(kObeyed, character.code);
    result.append(shown ? character.bytes : std::string_view("?"));
  }
  return result;
}

std::string Shortened(std::string_view text, std::size_t most) {
  constexpr std::string_view kCut = "...";
  std::string whole = Printable(text);
  if (automation::CharacterCount(whole) <= most) return whole;
  std::string_view rest = whole;
  for (std::size_t kept = 0; kept + kCut.size() < most; ++kept) NextCharacter(rest);
  return whole.substr(0, whole.size() - rest.size()).append(kCut);
}

std::size_t DisplayWidth(std::string_view text) noexcept {
  std::size_t width = 0;
  while (!text.empty()) width += WidthOf(NextCharacter(text).code);
  return width;
}

std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (text.empty()) return lines;
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    if (lines.empty() || DisplayWidth(lines.back()) + 1 + DisplayWidth(word) > width) {
      lines.emplace_back(word);
    } else {
      lines.back().append(" ").append(word);
    }
  }
}

std::string Table::ToText(const Style& style, std::string_view indent) const {
  const std::vector<std::size_t> widths = ColumnWidths(rows_);
  std::string text;
  for (const Row& row : rows_) {
    std::string line(indent);
    // Blanks are written before the next thing that can be seen, so that no line ends in them.
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t gap = widths[i] - DisplayWidth(row[i].text);
      if (row[i].align == Align::Right) blanks += gap;
      if (!row[i].text.empty()) {
        line.append(std::exchange(blanks, 0), ' ').append(style.Paint(row[i].colour, row[i].text));
      }
      if (row[i].align == Align::Left) blanks += gap;
      blanks += 2;
    }
    text.append(line).append("\n");
  }
  return text;
}

}  // namespace talvex::apps
