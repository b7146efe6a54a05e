// Accounting rules and their lines on their way between callers and the tables.
#pragma once

#include <cstdint>
#include <string>

#include "automation/class_info.h"

namespace talvex {

// The public class "Talvex.AccountingRule": a plain holder of values. Dates are dates or Empty.
class AccountingRule final : public automation::Object {
  TALVEX_CLASS(AccountingRule, "Talvex.AccountingRule",
               "A rule that yields a ledger account, as Talvex.BudgetManager reads and writes it.");

 public:
  TALVEX_PROPERTY(std::int32_t, ACCRULEID, "The rule's number, which the database assigns.");
  TALVEX_PROPERTY(std::string, RuleDescription, "The description.");
  TALVEX_PROPERTY(std::int16_t, SequenceNumber, "Of the rules that apply, the lowest number comes first.");
  TALVEX_PROPERTY(std::string, LedgerAccount, "The code of the account that the rule yields.");
  TALVEX_PROPERTY(automation::Variant, DateFrom, "The first moment at which it is valid; Empty for none.");
  TALVEX_PROPERTY(automation::Variant, DateTo,
                  "The last moment at which it is valid, so a day alone ends as it begins; Empty for none.");
};

// The public class "Talvex.AccountingRuleLine": a plain holder of values.
class AccountingRuleLine final : public automation::Object {
  TALVEX_CLASS(AccountingRuleLine, "Talvex.AccountingRuleLine",
               "A condition of an accounting rule, as Talvex.BudgetManager reads and writes it.");

 public:
  TALVEX_PROPERTY(std::int32_t, ACCRULEID, "The number of the rule.");
  TALVEX_PROPERTY(std::int32_t, LINENUMBER, "The number of the line in the rule.");
  TALVEX_PROPERTY(std::string, LineDescription, "The name of the requisition property that is compared.");
  TALVEX_PROPERTY(
      std::int16_t, Operator,
      "1 Less, 2 LessEqual, 3 Greater, 4 GreaterEqual, 5 Equal, 6 NotEqual, 7 Contains, 8 Inside, "
      "9 NotIn. A line with any other number counts as true.");
  TALVEX_PROPERTY(automation::Variant, FieldValue,
                  "What the property is compared with; for Inside and NotIn a list separated by \";\".");
};

}  // namespace talvex
