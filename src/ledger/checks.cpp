#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/budget_walk.h"
#include "ledger/line_amounts.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"

namespace talvex {

using automation::Currency;
using automation::Date;
using automation::Dictionary;
using automation::Variant;
using Lib_General::Gen_NullToDouble;
using Lib_General::Gen_NullToString;
using platform::database::DateLiteral;
using platform::database::kOptionsUnspecified;
using platform::database::TextLiteral;

namespace {

// Checks a budget and then its ancestors, each under the method's name. `check` gives the holder who must
// approve, and the item to enter; a holder who is entered already keeps the first item.
template <class Check>
void CheckStructure(std::string_view method, const std::string& code, Dictionary& holders, BudgetWalk& walk,
                    const Check& check) {
  Reads(method, [&] {
    if (!walk.Enter(code)) return;
    Variant item;
    const std::string holder = check(code, item);
    if (!automation::Trimmed(holder).empty() && !holders.Exists(holder)) holders.Add(holder, item);
    for (const std::string& parent : ReadParents(code)) CheckStructure(method, parent, holders, walk, check);
    walk.Leave(code);
  });
}

template <class Check>
void CheckHierarchy(std::string_view method, const std::string& code, std::shared_ptr<Dictionary>& holders,
                    const Check& check) {
  if (holders == nullptr) holders = std::make_shared<Dictionary>();
  BudgetWalk walk;
  CheckStructure(method, code, *holders, walk, check);
}

// Every state counts as used, what is not approved yet included.
double TotalWith(double new_amount, const LineAmounts& line) {
  return line.approved + new_amount + line.sent + line.not_approved + line.received + line.closed;
}

// Who must approve an amount, or nobody (the empty text), and why. Totals stay plain numbers here: they may
// be larger than any amount that can be handed out.
struct Approver {
  std::string holder;
  double available_before = 0;
  Currency new_amount;
};

Approver ApproverOf(const std::string& code, Date date, Currency amount, const std::string& currency_code) {
  if (automation::Trimmed(code).empty()) return {};
  const auto connection = Lib_General::getConnection();
  const auto budget = connection->Execute("SELECT * FROM BUDGET WHERE BUDGETCODE=" + TextLiteral(code),
                                          nullptr, kOptionsUnspecified);
  const std::string day = DateLiteral(date);
  // A line without an end date counts as open-ended, although it takes no postings.
  const auto line =
      connection->Execute("SELECT * FROM BUDGETLINES WHERE BUDGETCODE=" + TextLiteral(code) +
                              " AND STARTDATE<=" + day + " AND (ENDDATE>=" + day + " OR ENDDATE IS NULL)",
                          nullptr, kOptionsUnspecified);
  // A line without a header row belongs to no budget: it has neither currency nor holder.
  if (line->Eof() || budget->Eof()) return {};

  const platform::suite::CurrencyConverter currency(
      Lib_General::gen_getComponent(platform::suite::class_name::kCurrency));
  const Currency converted =
      currency.Convert(currency_code, Gen_NullToString(budget->Value("CURRENCYCODE")), amount, date);
  const LineAmounts amounts = ReadLineAmounts(*line);
  const double total = TotalWith(converted.ToDouble(), amounts);
  const bool exceeded = amounts.budget < total;
  const bool approval_required = Gen_NullToDouble(budget->Value("APPROVEINBUDGET")) != 0;
  if (!exceeded && !approval_required) return {};
  return {Gen_NullToString(budget->Value("USERID")), amounts.budget - (total - converted.ToDouble()),
          converted};
}

}  // namespace

void BudgetT::CheckBudgetStructure(const std::string& iBudgetCode, Date iDate, double iNewAmnt,
                                   std::string& iCurrencyCode, std::shared_ptr<Dictionary>& iBudgetHolders) {
  CheckHierarchy("Talvex.BudgetT.CheckBudgetStructure", iBudgetCode, iBudgetHolders,
                 [&](const std::string& code, Variant& item) {
                   item = code;
                   return CheckBudget(code, iDate, Currency::FromDouble(iNewAmnt), iCurrencyCode);
                 });
}

void BudgetT::SimCheckBudgetStructure(const std::string& iBudgetCode, Date iDate, double iNewAmnt,
                                      std::string& iCurrencyCode,
                                      std::shared_ptr<Dictionary>& iBudgetHolders) {
  CheckHierarchy("Talvex.BudgetT.SimCheckBudgetStructure", iBudgetCode, iBudgetHolders,
                 [&](const std::string& code, Variant& item) {
                   Currency available_before;
                   Currency new_amount;
                   std::string holder = SimCheckBudget(code, iDate, Currency::FromDouble(iNewAmnt),
                                                       iCurrencyCode, available_before, new_amount);
                   item = automation::Array({code, available_before, new_amount});
                   return holder;
                 });
}

std::string BudgetT::CheckBudget(const std::string& code, Date date, Currency amount,
                                 const std::string& currency_code) {
  return ApproverOf(code, date, amount, currency_code).holder;
}

std::string BudgetT::SimCheckBudget(const std::string& code, Date date, Currency amount,
                                    const std::string& currency_code, Currency& available_before,
                                    Currency& new_amount) {
  const Approver approver = ApproverOf(code, date, amount, currency_code);
  if (approver.holder.empty()) return {};
  available_before = Currency::FromDouble(approver.available_before);
  new_amount = approver.new_amount;
  return approver.holder;
}

}  // namespace talvex
