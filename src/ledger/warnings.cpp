#include "automation/decimal.h"
#include "ledger/budget_t.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/localised_texts.h"

namespace talvex {

using automation::NumberText;
using automation::Round;
using automation::Variant;
using Lib_General::Gen_NullToDouble;
using Lib_General::Gen_NullToString;
using platform::database::Connection;
using platform::database::LockType;
using platform::database::TextLiteral;

namespace {

// The site's switch for warning mails; off when it is not configured.
bool WarningMailsAreOn(const std::shared_ptr<Connection>& connection) {
  auto parameter = Lib_SQL::Sql_GetUpdateableRecordset(
      "SELECT PARAMVALUE FROM REQUISITIONPARAMETER WHERE PARAMNAME = "
      "'SendEmailToBudgetHolderForBudgetWarning'",
      connection, LockType::Optimistic);
  const bool on = !parameter->Eof() && automation::ToBoolean(parameter->Value("PARAMVALUE"));
  Lib_SQL::CloseRecordset(parameter);
  return on;
}

// The band of the warning step that a percentage lies in. The half step less one is deliberate: with a step
// of 10 the next band begins just above 1, 11, 21, 31 ... percent.
double Band(double percentage, double step) { return Round((step * 0.5 - 1 + percentage) / step, 0); }

// Whether the change of a line's available percentage is worth a mail: the line was just used up, or it has
// fallen into a lower band. A rise is not, except that of an overdrawn line to one that is just used up.
bool CallsForMail(double before, double after, const Variant& step) {
  if (Round(after, 0) == 0 && Round(before, 0) != 0) return true;
  const double size = Gen_NullToDouble(step);
  return size != 0 && Band(after, size) < Band(before, size);
}

}  // namespace

void BudgetT::checkbudgetwarning(double percentage_before, double percentage_after,
                                 const RecordsetRef& line) {
  Handled("Talvex.checkbudgetwarning", [&] {
    const auto connection = Lib_General::getConnection();
    auto budget =
        connection->Execute("SELECT BUDGETWARNING, USERID, CURRENCYCODE FROM BUDGET WHERE BUDGETCODE=" +
                                TextLiteral(Gen_NullToString(line->Value("BUDGETCODE"))),
                            nullptr, platform::database::kOptionsUnspecified);
    if (budget->Eof()) return;  // A line without a header row has nobody to warn.
    const Variant step = budget->Value("BUDGETWARNING");
    if (Round(percentage_after, 0) != 100 && step.IsNull()) return;
    if (!WarningMailsAreOn(connection)) return;
    if (CallsForMail(percentage_before, percentage_after, step)) SendBudgetSummary(budget, line);
    Lib_SQL::CloseRecordset(budget);
  });
}

void BudgetT::SendBudgetSummary(const RecordsetRef& budget, const RecordsetRef& line) {
  Handled("Talvex.SendBudgetSummary", [&] {
    const std::string holder = Gen_NullToString(budget->Value("USERID"));
    const std::string currency_code = Gen_NullToString(budget->Value("CURRENCYCODE"));
    const auto text = [&](const std::string& label) { return getI18N(holder, label); };
    const auto amount_line = [&](const std::string& title, std::string_view column) {
      return title + ": " + NumberText(Gen_NullToDouble(line->Value(column))) + " (" + currency_code +
             ")\r\n";
    };

    const std::string heading = text("SLBBU0240") + ", " + text("SLBBU0050") + ": " +
                                Gen_NullToString(line->Value("BUDGETCODE")) + "-" +
                                Gen_NullToString(line->Value("ID"));
    std::string body = amount_line(text("SLBBU0050"), "BUDGETAMNT");
    body += amount_line(text("SLBBU0072"), "USEDNOTAPPROVEDAMNT");
    body += amount_line(text("SLBBU0070"), "USEDAPPROVEDAMNT");
    body += amount_line(text("SLBBU0071"), "USEDSENDAMNT");
    body += amount_line("Received Amount",
                        "USEDRECEIVEDAMNT");  // This line alone has no label in the table of texts.
    body += amount_line(text("SLBBU0073"), "USEDCLOSEDAMNT");
    body += amount_line(text("SLBBU0074"), "AVAILABLEAMNT");
    body += text("SLBBU0217") + ": " + NumberText(Gen_NullToDouble(line->Value("AVAILABLEPERC")) * 100) + "%";

    const platform::suite::SuiteUser mailer(
        Lib_General::gen_getComponent(platform::suite::class_name::kSuiteUser));
    mailer.SendMail(holder, holder, heading, body);
  });
}

std::string BudgetT::getI18N(const std::string& user, const std::string& label) {
  return Handled("Talvex.getI18N", [&] { return Lib_General::LookUpI18N(user, label); });
}

}  // namespace talvex
