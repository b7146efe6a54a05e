// The filter language of record sets.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/database/row_set.h"

namespace talvex::platform::database {

struct Condition;
struct Literal;

// A condition on rows: comparisons (= <> < <= > >= LIKE) of a column with a literal, IS NULL, IS NOT NULL,
// AND, OR and parentheses, at most 200 deep. AND binds closer than OR. A literal is a text in quotes (doubled
// quotes inside), a number, or a date in quotes or between "#". Column names and words stand in any case,
// names also in brackets.
//
// What a cell holds decides how it is compared. A text compares with the literal as it is written, without
// the case of ASCII letters; a number with the number and a date with the date that the literal says, quoted
// or not, and with a literal that says none nothing matches, not even <>. Null matches nothing but IS NULL.
// LIKE takes numbers and dates as their texts; "%" and "*" stand for any run of characters, "_" for one, and
// one of these in brackets for itself. In the comparisons "[%]" stands for the percent sign as well.
class Filter {
 public:
  // Raises 3001 for a text that is no filter, naming what is wrong and where, and 3265 for a column that is
  // not there.
  Filter(std::string_view text, const RowSet& rows);
  ~Filter();
  Filter(Filter&&) noexcept;
  Filter& operator=(Filter&&) noexcept;

  [[nodiscard]] bool Matches(const RowSet& rows, std::size_t row) const;

  // Columns and the literals that every row that passes has in them: an index on any of these columns finds
  // all rows that pass, and perhaps others. None for a filter that allows no such thing. The literals live as
  // long as the filter.
  struct Equality {
    std::size_t column;
    const Literal* literal;
  };
  [[nodiscard]] const std::vector<Equality>& IndexableEqualities() const noexcept { return equalities_; }

 private:
  std::unique_ptr<const Condition> root_;
  std::vector<Equality> equalities_;
};

}  // namespace talvex::platform::database
