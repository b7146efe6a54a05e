#include "platform/database/filter_condition.h"

#include <algorithm>
#include <compare>
#include <utility>

#include "automation/conversions.h"
#include "automation/text.h"

namespace talvex::platform::database {

using automation::Kind;

Literal::Literal(std::string literal)
    : text(std::move(literal)), number(automation::ParseNumber(text)), date(automation::Date::Parse(text)) {}

namespace {

bool IsNull(Kind kind) noexcept { return kind == Kind::Null || kind == Kind::Empty; }

// How a cell stands to a literal; unordered when the two cannot be compared, as with Null.
std::partial_ordering Order(const RowSet& rows, std::size_t row, std::size_t column, const Literal& literal) {
  const Kind kind = rows.TypeAt(row, column);
  if (IsNull(kind)) return std::partial_ordering::unordered;
  if (kind == Kind::String) return automation::CompareFolded(rows.TextAt(row, column), literal.text) <=> 0;
  if (kind == Kind::Date) {
    if (!literal.date) return std::partial_ordering::unordered;
    return rows.Value(row, column).As<automation::Date>() <=> *literal.date;
  }
  if (!literal.number) return std::partial_ordering::unordered;
  return automation::ToDouble(rows.Value(row, column)) <=> *literal.number;
}

bool Satisfies(std::partial_ordering order, Comparison comparison) noexcept {
  if (order == std::partial_ordering::unordered) return false;
  switch (comparison) {
    case Comparison::Equal:
      return std::is_eq(order);
    case Comparison::Unequal:
      return std::is_neq(order);
    case Comparison::Less:
      return std::is_lt(order);
    case Comparison::LessOrEqual:
      return std::is_lteq(order);
    case Comparison::Greater:
      return std::is_gt(order);
    case Comparison::GreaterOrEqual:
      return std::is_gteq(order);
  }
  return false;
}

bool IsLike(const RowSet& rows, std::size_t row, const Condition& condition) {
  const Kind kind = rows.TypeAt(row, condition.column);
  if (IsNull(kind)) return false;
  if (kind == Kind::String) return condition.pattern.Matches(rows.TextAt(row, condition.column));
  return condition.pattern.Matches(automation::ToText(rows.Value(row, condition.column)));
}

}  // namespace

bool Holds(const Condition& condition, const RowSet& rows, std::size_t row) {
  const auto holds = [&](const Condition& part) { return Holds(part, rows, row); };
  switch (condition.kind) {
    case Condition::Kind::All:
      return std::all_of(condition.parts.begin(), condition.parts.end(), holds);
    case Condition::Kind::Any:
      return std::any_of(condition.parts.begin(), condition.parts.end(), holds);
    case Condition::Kind::Compare:
      return Satisfies(Order(rows, row, condition.column, condition.literal), condition.comparison);
    case Condition::Kind::Like:
      return IsLike(rows, row, condition);
    case Condition::Kind::IsNull:
      return IsNull(rows.TypeAt(row, condition.column));
    case Condition::Kind::IsNotNull:
      return !IsNull(rows.TypeAt(row, condition.column));
  }
  return false;
}

}  // namespace talvex::platform::database
