// What is left of a budget line: the invariant that every line keeps.
#pragma once

namespace talvex {

// What a line grants and how much of it is used, in the budget's currency.
struct LineAmounts {
  double budget = 0;
  double approved = 0;
  double sent = 0;
  double not_approved = 0;
  double received = 0;
  double closed = 0;
};

struct Availability {
  double amount = 0;
  double fraction = 0;  // Of the budget amount: 0.25 means that a quarter is left.
};

// Every state of a requisition counts as used. The fraction is 0 for a line that grants nothing; it is
// rounded to four decimals, half to even, and held within -999.9999 and 999.9999.
[[nodiscard]] Availability AvailabilityOf(const LineAmounts& line);

}  // namespace talvex
