// The cells that both programs write.
#pragma once

#include <string>

namespace talvex::bench {

inline constexpr int kColumns = 10;

inline bool IsText(int column) { return column % 3 == 0; }
inline double NumberOf(int row, int column) { return row * 1.25 + column; }
inline std::string TextOf(int row, int column) {
  return "text " + std::to_string(row) + " " + std::to_string(column);
}

}  // namespace talvex::bench
