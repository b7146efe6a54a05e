// The parsed form of a filter, and how rows are held against it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "automation/date.h"
#include "platform/database/like_pattern.h"
#include "platform/database/row_set.h"

namespace talvex::platform::database {

// A literal in each form in which a column may be compared with it. What forms it has follows from its text
// alone, whether it stood in quotes or not.
struct Literal {
  Literal() = default;
  explicit Literal(std::string literal);

  std::string text;
  std::optional<double> number;
  std::optional<automation::Date> date;
};

enum class Comparison : std::uint8_t { Equal, Unequal, Less, LessOrEqual, Greater, GreaterOrEqual };

struct Condition {
  enum class Kind : std::uint8_t { All, Any, Compare, Like, IsNull, IsNotNull };

  Kind kind = Kind::All;
  std::vector<Condition> parts;  // Of All and Any; chains are flat, so that a long one needs no deep stack.
  std::size_t column = 0;        // Of the other kinds.
  Comparison comparison = Comparison::Equal;
  Literal literal;
  LikePattern pattern;
};

[[nodiscard]] bool Holds(const Condition& condition, const RowSet& rows, std::size_t row);

}  // namespace talvex::platform::database
