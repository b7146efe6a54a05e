#include "ledger/availability.h"

#include <gtest/gtest.h>

namespace talvex::test {

namespace {

struct AvailabilityRow {
  LineAmounts line;
  double amount;
  double fraction;
};

TEST(AvailabilityOf, FollowsItsTable) {
  const AvailabilityRow rows[] = {
      // Nothing used; each state used; all of them.
      {{100, 0, 0, 0, 0, 0}, 100, 1},
      {{100, 10, 0, 0, 0, 0}, 90, 0.9},
      {{100, 0, 10, 0, 0, 0}, 90, 0.9},
      {{100, 0, 0, 10, 0, 0}, 90, 0.9},
      {{100, 0, 0, 0, 10, 0}, 90, 0.9},
      {{100, 0, 0, 0, 0, 10}, 90, 0.9},
      {{100, 1, 2, 4, 8, 16}, 69, 0.69},
      // Used up, overspent, and more left than was granted.
      {{100, 100, 0, 0, 0, 0}, 0, 0},
      {{100, 150, 0, 0, 0, 0}, -50, -0.5},
      {{100, -50, 0, 0, 0, 0}, 150, 1.5},
      // A line that grants nothing has no fraction.
      {{0, 0, 0, 0, 0, 0}, 0, 0},
      {{0, 10, 0, 0, 0, 0}, -10, 0},
      {{0, -10, 0, 0, 0, 0}, 10, 0},
      // A negative amount is divided by like any other.
      {{-100, 50, 0, 0, 0, 0}, -150, 1.5},
      // Four decimals, half to even.
      {{3, 1, 0, 0, 0, 0}, 2, 0.6667},
      {{20000, 1, 0, 0, 0, 0}, 19999, 1},
      {{20000, 3, 0, 0, 0, 0}, 19997, 0.9998},
      // Held within what the column takes.
      {{1, 1000, 0, 0, 0, 0}, -999, -999},
      {{1, 2000, 0, 0, 0, 0}, -1999, -999.9999},
      {{1, -2000, 0, 0, 0, 0}, 2001, 999.9999},
      {{10000, 10009998.9999, 0, 0, 0, 0}, -9999998.9999, -999.9999},
      {{1e-300, 1e300, 0, 0, 0, 0}, -1e300, -999.9999},
  };
  for (const AvailabilityRow& row : rows) {
    const Availability available = AvailabilityOf(row.line);
    EXPECT_DOUBLE_EQ(available.amount, row.amount) << row.line.budget << " / " << row.line.approved;
    EXPECT_EQ(available.fraction, row.fraction) << row.line.budget << " / " << row.line.approved;
  }
}

}  // namespace

}  // namespace talvex::test
