// Text operations that the whole component agrees on.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace talvex::automation {

// A letter A to Z as its small form; every other character, letters beyond ASCII included, as it is.
[[nodiscard]] constexpr char FoldCase(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
[[nodiscard]] constexpr char RaiseCase(char c) noexcept {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
[[nodiscard]] std::string Folded(std::string_view text);
[[nodiscard]] std::string Raised(std::string_view text);

// Less than, equal to or greater than 0, comparing byte by byte without the case of ASCII letters.
[[nodiscard]] int CompareFolded(std::string_view a, std::string_view b) noexcept;
[[nodiscard]] bool SameFolded(std::string_view a, std::string_view b) noexcept;

// Whether two codes of the store name the same thing: the tables compare codes without the case of ASCII
// letters, so everything that compares codes in memory must do so too.
[[nodiscard]] inline bool SameCode(std::string_view a, std::string_view b) noexcept {
  return SameFolded(a, b);
}

// The text without leading and trailing blanks (U+0020 and nothing else).
[[nodiscard]] std::string_view Trimmed(std::string_view text) noexcept;

// Every occurrence of `what` (not empty) replaced by `with`.
[[nodiscard]] std::string Replaced(std::string_view text, std::string_view what, std::string_view with);

// Whether the bytes are well-formed UTF-8.
[[nodiscard]] bool IsUtf8(std::string_view text) noexcept;

// The number of characters (code points) of a UTF-8 text.
[[nodiscard]] std::size_t CharacterCount(std::string_view text) noexcept;

// Hash and equality without the case of ASCII letters, for containers keyed by names or codes.
struct FoldedHash {
  using is_transparent = void;
  [[nodiscard]] std::size_t operator()(std::string_view text) const noexcept;
};
struct FoldedEqual {
  using is_transparent = void;
  [[nodiscard]] bool operator()(std::string_view a, std::string_view b) const noexcept {
    return SameFolded(a, b);
  }
};

}  // namespace talvex::automation
