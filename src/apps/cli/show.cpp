#include <nlohmann/json.hpp>

#include "apps/cli/amount_titles.h"
#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "apps/cli/ledger_rows.h"
#include "automation/decimal.h"

namespace talvex::apps {

namespace {

constexpr std::size_t kBarColumns = 20;

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json BudgetJson(const BudgetRow& budget, const std::vector<LineRow>& lines) {
  Json json = {{"budget", budget.code},
               {"type", TextOrNull(TypeName(budget))},
               {"currency", TextOrNull(budget.currency)},
               {"office", TextOrNull(budget.office)},
               {"chargeType", TextOrNull(budget.charge_type)},
               {"holder", TextOrNull(budget.holder)},
               {"approvalRequired", budget.approval},
               {"warningStep", ValueOrNull<Json>(budget.warning_step)},
               {"lines", Json::array()}};
  for (const LineRow& line : lines) json["lines"].push_back(LineJson(line));
  return json;
}

std::string OrDash(const std::string& text) { return text.empty() ? "-" : Printable(text); }

std::string StepText(const BudgetRow& budget) {
  return budget.warning_step ? automation::NumberText(*budget.warning_step) + "%" : "-";
}

Table Header(const BudgetRow& budget) {
  Table table;
  table.Add({{"Type"}, {OrDash(TypeName(budget))}, {"Currency"}, {OrDash(budget.currency)}});
  table.Add({{"Office"}, {OrDash(budget.office)}, {"Charge type"}, {OrDash(budget.charge_type)}});
  table.Add(
      {{"Holder"}, {OrDash(budget.holder)}, {"Approval"}, {budget.approval ? "required" : "not required"}});
  table.Add({{"Warning step"}, {StepText(budget)}});
  return table;
}

std::string PeriodText(const LineRow& line) {
  const std::string start = line.start ? DayText(*line.start) : "the beginning";
  return line.end ? "from " + start + " to " + DayText(*line.end) : "from " + start + " on";
}

void PrintLine(const Session& session, const LineRow& line, const AmountTitles& titles) {
  const Style& style = session.Look();
  const Colour colour = ColourOf(line.available);
  Table table;
  for (const AmountTitle& title : titles.amounts) {
    table.Add({{title.title}, RightCell(AmountText(line.*title.amount))});
  }
  table.Add({{titles.available},
             RightCell(AmountText(line.available.amount)),
             {BarText(line.available, kBarColumns, style), Table::Align::Left, colour},
             {PercentText(line.available.fraction), Table::Align::Right, colour}});
  session.Out() << "\nLine " << line.id << ", " << PeriodText(line) << '\n' << table.ToText(style, "  ");
}

ExitStatus ShowBudget(Session& session, const std::string& code) {
  const auto connection = session.Host().Connect();
  const std::optional<BudgetRow> budget = ReadBudget(*connection, code);
  if (!budget) throw Refusal("there is no budget '" + Shortened(code) + "'");
  const std::vector<LineRow> lines = ReadLines(*connection, code);
  if (session.Options().json) {
    session.Print(BudgetJson(*budget, lines));
    return ExitStatus::Done;
  }
  const AmountTitles titles = TitlesFor(session);
  session.Out() << "Budget " << Printable(budget->code) << '\n'
                << Header(*budget).ToText(session.Look(), "  ");
  for (const LineRow& line : lines) PrintLine(session, line, titles);
  if (lines.empty()) session.Out() << "\nNo lines.\n";
  return ExitStatus::Done;
}

}  // namespace

ExitStatus RunShow(Session& session, const std::string& code) {
  return session.Reading([&] { return ShowBudget(session, code); });
}

}  // namespace talvex::apps
