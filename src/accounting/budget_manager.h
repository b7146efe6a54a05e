// Maintenance of ledger accounts and accounting rules, and the choice of a default ledger account.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "accounting/account_decision.h"
#include "accounting/accounting_rule.h"
#include "accounting/ledger_account.h"
#include "automation/class_info.h"
#include "automation/collection.h"
#include "types/accounting_types.h"

namespace talvex {

// The public class "Talvex.BudgetManager". It keeps no state between calls: every method opens what it needs,
// works inside the caller's transaction when there is one, and releases everything before it returns.
// Failures are logged, vote abort, and are raised with the whole chain of calls in their description. What
// the database refuses has a number of its own: -2147216504 for a duplicate key, -2147216503 for a missing
// value, -2147216494 and -2147216493 where a ledger account and its accounting rules or requisition lines do
// not go together.
class BudgetManager final : public automation::Object {
  TALVEX_CLASS(BudgetManager, "Talvex.BudgetManager",
               "Ledger accounts, accounting rules, and the account that a requisition line defaults to.");

 public:
  TALVEX_METHOD(automation::Variant, GetLedgerAccountDetails, (const std::string& i_sLedgerAccount),
                "The ledger account of that code, a Talvex.LedgerAccount; Empty when there is none. Only "
                "reads.");

  TALVEX_METHOD(bool, UpdateLedgerAccount, (const std::shared_ptr<LedgerAccount>& i_objLedgerAccount),
                "Changes the ledger account of that code, or adds it. An empty description and empty dates "
                "are stored as Null. True. Writes LEDGERACCOUNT.");

  TALVEX_METHOD(bool, DeleteLedgerAccount, (const std::string& i_sLedgerAccount),
                "Deletes the ledger account, if there is one. True. One that an accounting rule refers to "
                "raises -2147216494, one that a requisition line refers to -2147216493. Writes "
                "LEDGERACCOUNT.");

  TALVEX_METHOD(void, GetAllLedgerAccounts, (automation::Variant & io_objSD),
                "Sets io_objSD to a dictionary of all account codes and their descriptions. Only reads.");

  TALVEX_METHOD(automation::Variant, GetAccountingRuleDetails, (std::int32_t i_lAccRuleID),
                "The accounting rule of that number, a Talvex.AccountingRule; Empty when there is none. Only "
                "reads.");

  TALVEX_METHOD(bool, UpdateAccountingRule,
                (const std::shared_ptr<AccountingRule>& i_objAccountingRule,
                 automation::Variant* o_lAccountingRuleID),
                "Changes the accounting rule of that number, or adds a rule, whose number the database "
                "assigns. An empty description and empty dates are stored as Null. o_lAccountingRuleID "
                "receives the rule's number. True. Writes ACCOUNTINGRULE.");

  TALVEX_METHOD(bool, DeleteAccountingRule, (std::int32_t i_lAccRuleID),
                "Deletes the lines of the rule and then the rule; inside a transaction both or neither. "
                "True. Writes ACCOUNTINGRULELINE and ACCOUNTINGRULE.");

  TALVEX_METHOD(automation::Variant, GetAccountingRuleLineDetails,
                (std::int32_t i_lAccRuleID, std::int32_t i_lRuleLineNumber),
                "The line of that number of a rule, a Talvex.AccountingRuleLine; Empty when there is none. "
                "Only reads.");

  TALVEX_METHOD(bool, UpdateAccountingRuleLine, (const std::shared_ptr<AccountingRuleLine>& i_objAccRuleLine),
                "Changes the line of that number of a rule, or adds it. A new line whose LINENUMBER is not "
                "positive gets the rule's highest plus one. An empty LineDescription is stored as Null, a "
                "FieldValue as it is. True. Writes ACCOUNTINGRULELINE.");

  TALVEX_METHOD(bool, DeleteAccountingRuleLine,
                (std::int32_t i_lAccRuleID, std::int32_t i_lAccRuleLineNumber),
                "Deletes the line of the rule, if there is one. True. Writes ACCOUNTINGRULELINE.");

  TALVEX_METHOD(
      std::string, getDefaultLedgerAccount,
      (const std::shared_ptr<automation::Collection>& i_RequisitionProps, LedgerAccountType i_eAccountType),
      "The code of the ledger account that a requisition line with these properties (name to "
      "value) is booked to; empty when no rule yields one. Of the rules that are valid now, whose "
      "account is valid now and of that type (any number but 1 to 4: of every type) and whose lines "
      "all hold, the lowest sequence number decides, an account with a mandatory dimension that "
      "the requisition leaves empty passed over. A property that is wanted and not there raises 5. "
      "Only reads.");

  // The same, telling how: `decision`, unless null, is filled as far as the call comes.
  [[nodiscard]] static std::string DecideLedgerAccount(
      const std::shared_ptr<automation::Collection>& properties, LedgerAccountType account_type,
      AccountDecision* decision);

 private:
  static bool ExecuteStatement(const std::string& sql);
};

}  // namespace talvex
