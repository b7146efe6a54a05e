#include "automation/decimal.h"
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/budget_walk.h"
#include "platform/database/literals.h"
#include "platform/environment.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex {

using automation::Date;
using automation::Error;
using Lib_General::gen_getComponent;
using Lib_General::Gen_NullToDouble;
using Lib_General::Gen_NullToString;
using Lib_General::getConnection;
using platform::database::CursorLocation;
using platform::database::CursorType;
using platform::database::DateLiteral;
using platform::database::kOptionsText;
using platform::database::LockType;
using platform::database::Recordset;
using platform::database::TextLiteral;
using platform::suite::CurrencyConverter;

// What is posted, the same for every budget of the walk: each converts it into its own currency.
struct Posting {
  Date date;
  double amount = 0;
  const std::string& currency_code;
  TalvexType type = TalvexType::Approved;
};

namespace {

constexpr std::int32_t kNoLine = -1;

// The running total that a requisition state moves.
std::string_view TotalColumn(TalvexType type) {
  switch (type) {
    case TalvexType::Approved:
      return "USEDAPPROVEDAMNT";
    case TalvexType::NotYetApproved:
      return "USEDNOTAPPROVEDAMNT";
    case TalvexType::send:
      return "USEDSENDAMNT";
    case TalvexType::Closed:
      return "USEDCLOSEDAMNT";
    case TalvexType::Received:
      return "USEDRECEIVEDAMNT";
  }
  throw Error(static_cast<std::int32_t>(TalvexErrors::BudgetTypeNotFound), "Talvex.PostToBudgetStructure",
              "Unknow budget type");
}

std::shared_ptr<Recordset> NewRecordset() {
  auto recordset = std::make_shared<Recordset>();
  recordset->CursorLocation = static_cast<std::int32_t>(CursorLocation::Client);
  return recordset;
}

}  // namespace

std::int32_t BudgetT::PostToBudget(const std::string& iBudgetCode, Date iDate, double iAmount,
                                   const std::string& iCurrencyCode, TalvexType iBudgetType) {
  return Writes("Talvex.BudgetT.PostToBudget", [&] {
    BudgetWalk walk;
    return PostToBudgetStructure(iBudgetCode, {iDate, iAmount, iCurrencyCode, iBudgetType}, walk);
  });
}

std::int32_t BudgetT::PostToBudgetStructure(const std::string& code, const Posting& posting,
                                            BudgetWalk& walk) {
  return Handled("Talvex.BudgetT.PostToBudgetStructure", [&] {
    if (!walk.Enter(code)) return kNoLine;
    const bool blank = automation::Trimmed(code).empty();
    const std::int32_t line_id = blank ? kNoLine : PostToLine(code, posting);
    ParentPost(code, posting, walk);
    walk.Leave(code);
    return line_id;
  });
}

void BudgetT::ParentPost(const std::string& code, const Posting& posting, BudgetWalk& walk) {
  Handled("Talvex.BudgetT.ParentPost", [&] {
    for (const std::string& parent : ReadParents(code)) PostToBudgetStructure(parent, posting, walk);
  });
}

std::int32_t BudgetT::PostToLine(const std::string& code, const Posting& posting) {
  auto connection = getConnection();
  auto budget = Lib_SQL::Sql_GetReadonlyRecordset(
      "select * from BUDGET where BUDGETCODE=" + TextLiteral(code), connection);
  const std::string date = DateLiteral(posting.date);
  // A line without an end date takes no postings: no " OR ENDDATE IS NULL" here, unlike in the checks.
  auto line = NewRecordset();
  line->Open("select * from BUDGETLINES where BUDGETCODE=" + TextLiteral(code) + " and STARTDATE<=" + date +
                 " AND ENDDATE>=" + date,
             connection, CursorType::Static, LockType::BatchOptimistic, kOptionsText);
  line->SetActiveConnection(nullptr);
  // A line without a header row belongs to no budget: it has no currency to convert into.
  if (line->Eof() || budget->Eof()) return kNoLine;

  AddToTotal(posting, budget, line);
  Lib_SQL::CloseRecordset(budget);
  Lib_General::Gen_CloseConnection(connection);
  SetBudgetAvailable(line);

  const auto writing = getConnection();
  line->SetActiveConnection(writing);
  line->UpdateBatch(platform::database::Affect::All);
  const std::int32_t line_id = automation::ToInt32(line->Value("ID"));
  Lib_SQL::CloseRecordset(line);
  return line_id;
}

void BudgetT::AddToTotal(const Posting& posting, const RecordsetRef& budget, const RecordsetRef& line) {
  const CurrencyConverter currency(gen_getComponent(platform::suite::class_name::kCurrency));
  const std::string_view total = TotalColumn(posting.type);
  const double before = Gen_NullToDouble(line->Value(total));
  line->SetValue(total, before + ConvertToBudgetCurrency(currency, posting.currency_code, budget,
                                                         posting.amount, posting.date));
}

double BudgetT::ConvertToBudgetCurrency(const CurrencyConverter& currency, const std::string& currency_code,
                                        const RecordsetRef& budget, double amount, Date date) {
  const std::string target = Gen_NullToString(budget->Value("CURRENCYCODE"));
  const auto converted =
      currency.Convert(currency_code, target, automation::Currency::FromDouble(amount), date);
  // Rounded to the decimals of the currency posted in, not of the budget's own.
  return automation::Round(converted.ToDouble(), currency.Decimals(currency_code));
}

std::int16_t BudgetT::RepostAllBudgets() {
  return Writes("Talvex.BudgetT.RepostAllBudgets", [&] {
    const auto connection = getConnection();
    auto lines = NewRecordset();
    // The date stands in its plain text form, unquoted: the database reads a quotient, and every line that
    // has an end date passes.
    const std::string today = platform::Environment::Current().clock->Now().DayOnly().ToText();
    lines->Open("select * from BUDGETLINES where ENDDATE>=" + today, connection, CursorType::Dynamic,
                LockType::Optimistic, kOptionsText);
    std::int32_t count = 0;
    for (; !lines->Eof(); lines->MoveNext()) {
      // Closed amounts survive a reset.
      for (const auto* total :
           {"USEDAPPROVEDAMNT", "USEDNOTAPPROVEDAMNT", "USEDSENDAMNT", "USEDRECEIVEDAMNT"}) {
        lines->SetValue(total, 0.0);
      }
      SetBudgetAvailable(lines);
      lines->Update(std::nullopt, std::nullopt);
      ++count;
      static_cast<void>(automation::ToInt16(count));  // Overflow past 32767.
    }
    Lib_SQL::CloseRecordset(lines);
    return automation::ToInt16(count);
  });
}

}  // namespace talvex
