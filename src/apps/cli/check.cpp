#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/inputs.h"
#include "apps/cli/lines_in_force.h"
#include "apps/cli/results.h"
#include "automation/conversions.h"

namespace talvex::apps {

namespace {

using automation::Array;
using automation::Variant;

struct Question {
  std::string code;
  double amount = 0;
  std::string currency;
  automation::Date date;
  bool simulate = false;
};

// One who must approve, and the budget for which.
struct Approval {
  std::string holder;
  std::string budget;
  std::optional<double> available;   // Before the new amount, in the budget's currency; simulated only.
  std::optional<double> new_amount;  // In the budget's currency; simulated only.
};

std::vector<Approval> Ask(Session& session, const Question& question) {
  Variant holders;
  Variant currency = question.currency;
  session.Create("Talvex.BudgetT")
      ->Call(question.simulate ? "SimCheckBudgetStructure" : "CheckBudgetStructure", question.code,
             question.date, question.amount, currency, holders);
  std::vector<Approval> approvals;
  for (const auto& [holder, item] : DictionaryIn(holders).Entries()) {
    Approval approval{holder, {}, std::nullopt, std::nullopt};
    if (item.IsArray()) {
      const Array& situation = item.As<Array>();
      approval.budget = automation::ToText(situation.At(0));
      approval.available = automation::ToDouble(situation.At(1));
      approval.new_amount = automation::ToDouble(situation.At(2));
    } else {
      approval.budget = automation::ToText(item);
    }
    approvals.push_back(std::move(approval));
  }
  return approvals;
}

std::string ReasonOf(const BudgetRow& budget, const Approval& approval) {
  const bool known = approval.available && approval.new_amount;
  const bool overspent = known ? *approval.available < *approval.new_amount : !budget.approval;
  if (!budget.approval) return "would be overspent";
  return overspent ? "would be overspent, and always requires approval" : "always requires approval";
}

void PrintJson(const Session& session, Connection& connection, const Question& question,
               const std::vector<Approval>& approvals) {
  Json holders = Json::array();
  for (const Approval& approval : approvals) {
    const BudgetRow budget = ReadBudget(connection, approval.budget).value_or(BudgetRow());
    Json holder = {
        {"holder", approval.holder}, {"budget", approval.budget}, {"reason", ReasonOf(budget, approval)}};
    if (question.simulate) {
      holder.update({{"currency", budget.currency},
                     {"availableBefore", *approval.available},
                     {"newAmount", *approval.new_amount}});
    }
    holders.push_back(std::move(holder));
  }
  session.Print({{"budget", question.code},
                 {"known", ReadBudget(connection, question.code).has_value()},
                 {"date", DayText(question.date)},
                 {"amount", question.amount},
                 {"currency", question.currency},
                 {"approvals", std::move(holders)}});
}

Table SituationTable(Connection& connection, const std::vector<Approval>& approvals) {
  Table table;
  table.Add({{"Who"},
             {"For budget"},
             {"In"},
             RightCell("Available"),
             RightCell("New amount"),
             RightCell("Left then"),
             {"Why"}});
  for (const Approval& approval : approvals) {
    const BudgetRow budget = ReadBudget(connection, approval.budget).value_or(BudgetRow());
    const double left = *approval.available - *approval.new_amount;
    table.Add({{Printable(approval.holder)},
               {Printable(approval.budget)},
               {Printable(budget.currency)},
               RightCell(AmountText(approval.available)),
               RightCell(AmountText(approval.new_amount)),
               {AmountText(left), Table::Align::Right, left < 0 ? Colour::Red : Colour::Plain},
               {ReasonOf(budget, approval)}});
  }
  return table;
}

Table ApprovalTable(Session& session, Connection& connection, const std::vector<Approval>& approvals,
                    automation::Date day) {
  LinesInForce lines(session, connection, day);
  Table table;
  table.Add({{"Who"}, {"For budget"}, {"In"}, RightCell("Available"), {}, {}, {"Why"}});
  for (const Approval& approval : approvals) {
    const BudgetRow budget = ReadBudget(connection, approval.budget).value_or(BudgetRow());
    Table::Row cells = {
        {Printable(approval.holder)}, {Printable(approval.budget)}, {Printable(budget.currency)}};
    AddAvailable(lines.Of(approval.budget), session.Look(), cells);
    cells.push_back({ReasonOf(budget, approval)});
    table.Add(std::move(cells));
  }
  return table;
}

void PrintText(Session& session, Connection& connection, const Question& question,
               const std::vector<Approval>& approvals) {
  const std::string what = AmountText(question.amount) + " " + Shortened(question.currency) + " on " +
                           Shortened(question.code) + ", " + DayText(question.date);
  if (approvals.empty()) {
    session.Out() << what << ": nobody has to approve.\n";
    return;
  }
  session.Out() << what << ": approval is needed.\n\n"
                << (question.simulate ? SituationTable(connection, approvals)
                                      : ApprovalTable(session, connection, approvals, question.date))
                       .ToText(session.Look(), "  ");
}

ExitStatus AnswerCheck(Session& session, const Question& question) {
  const auto connection = session.Host().Connect();
  const std::vector<Approval> approvals = Ask(session, question);
  const bool known = ReadBudget(*connection, question.code).has_value();
  if (session.Options().json) {
    PrintJson(session, *connection, question, approvals);
  } else {
    if (!known) session.Out() << "There is no budget '" << Shortened(question.code) << "'.\n";
    if (known || !approvals.empty()) PrintText(session, *connection, question, approvals);
  }
  return known && approvals.empty() ? ExitStatus::Done : ExitStatus::No;
}

}  // namespace

ExitStatus RunCheck(Session& session, const CheckArguments& arguments) {
  const Question question = {arguments.code, AmountOf(arguments.amount), arguments.currency,
                             DateOf(arguments.date, session), arguments.simulate};
  return session.Reading([&] { return AnswerCheck(session, question); });
}

}  // namespace talvex::apps
