// The patterns of LIKE.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace talvex::platform::database {

// "%" and "*" stand for any run of characters, none included, "_" for one character (not one byte); one of
// these, or
// "[", between brackets stands for itself: "50[%]". Letters match without the case of ASCII.
class LikePattern {
 public:
  LikePattern() = default;
  explicit LikePattern(std::string_view pattern);

  [[nodiscard]] bool Matches(std::string_view text) const noexcept;

 private:
  enum class Wants : std::uint8_t { Byte, OneCharacter, AnyRun };
  struct Piece {
    Wants wants;
    char byte;
  };
  // How many bytes of the text's beginning the piece takes; 0 when it does not fit.
  [[nodiscard]] static std::size_t Taken(Piece piece, std::string_view text) noexcept;

  std::vector<Piece> pieces_;
};

}  // namespace talvex::platform::database
