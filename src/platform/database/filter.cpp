#include "platform/database/filter.h"

#include "platform/database/filter_condition.h"
#include "platform/database/filter_parser.h"

namespace talvex::platform::database {

namespace {

void CollectEqualities(const Condition& condition, std::vector<Filter::Equality>& equalities) {
  if (condition.kind == Condition::Kind::All) {
    for (const Condition& part : condition.parts) CollectEqualities(part, equalities);
  }
  if (condition.kind == Condition::Kind::Compare && condition.comparison == Comparison::Equal) {
    equalities.push_back({condition.column, &condition.literal});
  }
}

}  // namespace

Filter::Filter(std::string_view text, const RowSet& rows)
    : root_(std::make_unique<const Condition>(ParseFilter(text, rows))) {
  CollectEqualities(*root_, equalities_);
}

Filter::~Filter() = default;
Filter::Filter(Filter&&) noexcept = default;
Filter& Filter::operator=(Filter&&) noexcept = default;

bool Filter::Matches(const RowSet& rows, std::size_t row) const { return Holds(*root_, rows, row); }

}  // namespace talvex::platform::database
