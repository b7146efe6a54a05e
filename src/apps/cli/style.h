// How answers for people look: which characters and colours the output takes, and how wide it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace talvex::apps {

enum class Colour { Plain, Dim, Green, Yellow, Red };

struct Style {
  bool colour = false;
  bool unicode = true;
  std::size_t width = 80;

  // The text in that colour, or as it is where colours are off.
  [[nodiscard]] std::string Paint(Colour colour_name, std::string_view text) const;
  // The first text where the output takes all characters, else the second, which is ASCII.
  [[nodiscard]] std::string_view Choose(std::string_view fancy, std::string_view ascii) const noexcept {
    return unicode ? fancy : ascii;
  }
};

// What suits standard output: the terminal's width and, unless NO_COLOR is set or the terminal is "dumb",
// colours; in a pipe 80 columns and no colours. Only a locale that names another character set than UTF-8
// takes the drawing characters away: where no locale is set, terminals are UTF-8 nowadays.
[[nodiscard]] Style StyleOfStandardOutput();

}  // namespace talvex::apps
