#include "ledger/availability.h"

#include "automation/decimal.h"
#include "ledger/budget_t.h"
#include "ledger/line_amounts.h"
#include "services/frame.h"
#include "services/required.h"

namespace talvex {

namespace {

constexpr int kFractionPlaces = 4;
constexpr double kLargestFraction = 999.9999;

double HeldWithinLimits(double fraction) {
  const double rounded = automation::Round(fraction, kFractionPlaces);
  if (rounded > kLargestFraction) return kLargestFraction;
  if (rounded < -kLargestFraction) return -kLargestFraction;
  return rounded;
}

}  // namespace

Availability AvailabilityOf(const LineAmounts& line) {
  const double used = line.approved + line.sent + line.not_approved + line.received + line.closed;
  const double left = line.budget - used;
  return {left, line.budget == 0 ? 0 : HeldWithinLimits(left / line.budget)};
}

void BudgetT::SetBudgetAvailable(RecordsetRef& iRS) {
  Reads("Talvex.BudgetT.SetBudgetAvailable", [&] {
    constexpr double kPercent = 100;
    platform::database::Recordset& line = Required(iRS, "the record set", "Talvex.BudgetT");
    const double fraction_before = Lib_General::Gen_NullToDouble(line.Value("AVAILABLEPERC"));
    const Availability available = AvailabilityOf(ReadLineAmounts(line));
    line.SetValue("AVAILABLEAMNT", available.amount);
    line.SetValue("AVAILABLEPERC", available.fraction);
    if (available.fraction == fraction_before) return;
    checkbudgetwarning(fraction_before * kPercent, available.fraction * kPercent, iRS);
  });
}

}  // namespace talvex
