// The budget ledger.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "automation/class_info.h"
#include "platform/database/recordset.h"
#include "platform/suite.h"
#include "types/talvex_types.h"

namespace talvex {

struct Posting;
class BudgetWalk;

// The public class "Talvex.BudgetT". It keeps no state between calls: every method opens what it needs, works
// inside the caller's transaction when there is one, and releases everything before it returns. Failures are
// logged, vote abort, and are raised with the whole chain of calls in their description.
class BudgetT final : public automation::Object {
  TALVEX_CLASS(BudgetT, "Talvex.BudgetT",
               "The budget ledger: budgets, their lines and running totals, and their hierarchy.");

 public:
  TALVEX_METHOD(
      automation::Variant, GetBudgetLine, (const std::string& iBudgetCode, automation::Date& iDate),
      "The number (ID) of the budget's line in force on a date; a line without an end date is in force from "
      "its "
      "first day on. Null when the code is blank or no line is in force. iDate is not changed. Only reads.");

  TALVEX_METHOD(
      std::int32_t, PostToBudget,
      (const std::string& iBudgetCode, automation::Date iDate, double iAmount,
       const std::string& iCurrencyCode, TalvexType iBudgetType),
      "Posts an amount, in currency iCurrencyCode as of iDate, to the budget and to every ancestor once: "
      "adds it, "
      "converted into each budget's currency, to the running total that iBudgetType selects, recomputes what "
      "is "
      "available, and mails the budget holder when a warning step is crossed. A negative amount takes back. "
      "Returns the ID of the budget's own line, or -1 when it has none that takes postings on the date (a "
      "line "
      "without an end date takes none); the ancestors are posted all the same. Writes BUDGETLINES. Raises "
      "BudgetTypeNotFound for an unknown type and 28 for a loop in the hierarchy.");

  TALVEX_METHOD(
      std::int16_t, RepostAllBudgets, (),
      "Sets the totals of all current lines to 0, the closed total excepted: closed amounts survive a reset. "
      "Recomputes what is available. Returns how many lines were reset; more than 32767 raise 6. Writes "
      "BUDGETLINES.");

  TALVEX_METHOD(void, SetBudgetAvailable, (std::shared_ptr<platform::database::Recordset> & iRS),
                "Recomputes AVAILABLEAMNT and AVAILABLEPERC of the current row of a BUDGETLINES record set, "
                "and mails the "
                "budget holder when a warning step is crossed. Does not write the row: the caller updates "
                "the record set.");

 private:
  using RecordsetRef = std::shared_ptr<platform::database::Recordset>;

  // Posting. The walk knows which budgets were posted, and the path it is on.
  std::int32_t PostToBudgetStructure(const std::string& code, const Posting& posting, BudgetWalk& walk);
  void ParentPost(const std::string& code, const Posting& posting, BudgetWalk& walk);
  std::int32_t PostToLine(const std::string& code, const Posting& posting);
  static void AddToTotal(const std::string& code, const Posting& posting, const RecordsetRef& budget,
                         const RecordsetRef& line);
  [[nodiscard]] static double ConvertToBudgetCurrency(const platform::suite::CurrencyConverter& currency,
                                                      const std::string& currency_code,
                                                      const RecordsetRef& budget, double amount,
                                                      automation::Date date);

  // Warnings. The percentages are those before and after a change, 100 for a line with nothing used.
  static void checkbudgetwarning(double percentage_before, double percentage_after, const RecordsetRef& line);
  static void SendBudgetSummary(const RecordsetRef& budget, const RecordsetRef& line);
  [[nodiscard]] static std::string getI18N(const std::string& user, const std::string& label);
};

}  // namespace talvex
