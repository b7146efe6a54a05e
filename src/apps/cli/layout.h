// Laying out text in columns and paragraphs.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "apps/cli/style.h"

namespace talvex::apps {

// The text with everything that a terminal would obey rather than show (control characters) and every byte
// that is not UTF-8 as "?": what stands in a table must not move the cursor of whoever looks at it.
[[nodiscard]] std::string Printable(std::string_view text);

// Printable, and at most so many characters long; what is cut off is told by "...".
[[nodiscard]] std::string Shortened(std::string_view text, std::size_t most = 60);

// How many columns a UTF-8 text takes on a terminal: two for the wide letters of East Asia, none for
// combining marks.
[[nodiscard]] std::size_t DisplayWidth(std::string_view text) noexcept;

// The text's words on lines of at most `width` columns; a longer word has a line of its own. No line for no
// words.
[[nodiscard]] std::vector<std::string> Wrapped(std::string_view text, std::size_t width);

// Rows of cells under each other, each column as wide as its widest cell, two blanks between columns.
class Table {
 public:
  enum class Align { Left, Right };
  struct Cell {
    std::string text;
    Align align = Align::Left;
    Colour colour = Colour::Plain;
  };
  using Row = std::vector<Cell>;

  // Rows may differ in their number of cells.
  void Add(Row row) { rows_.push_back(std::move(row)); }
  // The lines, each after `indent`, without blanks at their ends.
  [[nodiscard]] std::string ToText(const Style& style, std::string_view indent = {}) const;

 private:
  std::vector<Row> rows_;
};

// A cell that stands at the right edge of its column, as amounts do.
[[nodiscard]] inline Table::Cell RightCell(std::string text) {
  return {std::move(text), Table::Align::Right};
}

}  // namespace talvex::apps
