#include "platform/database/like_pattern.h"

#include "automation/text.h"

namespace talvex::platform::database {

namespace {

bool IsSpecial(char c) noexcept { return c == '%' || c == '*' || c == '_' || c == '['; }

// The number of bytes of the character that begins the text.
std::size_t CharacterLength(std::string_view text) noexcept {
  std::size_t length = 1;
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) ++length;
  return length;
}

}  // namespace

LikePattern::LikePattern(std::string_view pattern) {
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    const char c = pattern[at];
    if (c == '[' && at + 2 < pattern.size() && pattern[at + 2] == ']' && IsSpecial(pattern[at + 1])) {
      pieces_.push_back({Wants::Byte, pattern[at + 1]});
      at += 2;
    } else if (c == '%' || c == '*') {
      pieces_.push_back({Wants::AnyRun, c});
    } else {
      pieces_.push_back({c == '_' ? Wants::OneCharacter : Wants::Byte, automation::FoldCase(c)});
    }
  }
}

std::size_t LikePattern::Taken(Piece piece, std::string_view text) noexcept {
  if (piece.wants == Wants::OneCharacter) return CharacterLength(text);
  return piece.wants == Wants::Byte && automation::FoldCase(text.front()) == piece.byte ? 1 : 0;
}

bool LikePattern::Matches(std::string_view text) const noexcept {
  // Only the last run met has to be tried at other lengths: what stands before it has been found as early as
  // it can be.
  std::size_t next = 0;
  std::size_t after_run = 0;
  std::string_view run_ends;
  while (!text.empty()) {
    if (next < pieces_.size() && pieces_[next].wants == Wants::AnyRun) {
      after_run = ++next;
      run_ends = text;
      continue;
    }
    if (const std::size_t taken = next < pieces_.size() ? Taken(pieces_[next], text) : 0; taken > 0) {
      ++next;
      text.remove_prefix(taken);
      continue;
    }
    if (after_run == 0) return false;
    next = after_run;
    run_ends.remove_prefix(CharacterLength(run_ends));
    text = run_ends;
  }
  while (next < pieces_.size() && pieces_[next].wants == Wants::AnyRun) ++next;
  return next == pieces_.size();
}

}  // namespace talvex::platform::database
