#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/figures.h"
#include "apps/cli/layout.h"
#include "component/verification.h"

namespace talvex::apps {

namespace {

using component::LineDrift;
using component::LineWithoutBudget;

Json DriftJson(const LineDrift& drift) {
  return {
      {"budget", drift.budget_code},
      {"line", drift.line_id},
      {"stored", {{"available", drift.stored.amount}, {"availableFraction", drift.stored.fraction}}},
      {"expected", {{"available", drift.expected.amount}, {"availableFraction", drift.expected.fraction}}}};
}

std::string Lines(std::int32_t count) { return std::to_string(count) + (count == 1 ? " line" : " lines"); }

Table DriftTable(const std::vector<LineDrift>& drifts) {
  Table table;
  table.Add({{"Budget"}, RightCell("Line"), RightCell("Stored"), {}, RightCell("Expected"), {}});
  for (const LineDrift& drift : drifts) {
    table.Add({{Printable(drift.budget_code)},
               RightCell(std::to_string(drift.line_id)),
               RightCell(AmountText(drift.stored.amount)),
               RightCell(PercentText(drift.stored.fraction)),
               RightCell(AmountText(drift.expected.amount)),
               RightCell(PercentText(drift.expected.fraction))});
  }
  return table;
}

Json Found(const component::Verification& found) {
  Json drifts = Json::array();
  for (const LineDrift& drift : found.drifts) drifts.push_back(DriftJson(drift));
  Json without_budget = Json::array();
  for (const LineWithoutBudget& line : found.without_budget)
    without_budget.push_back({{"budget", line.budget_code}, {"line", line.line_id}});
  return {
      {"lines", found.lines}, {"drifts", std::move(drifts)}, {"withoutBudget", std::move(without_budget)}};
}

Table WithoutBudgetTable(const std::vector<LineWithoutBudget>& lines) {
  Table table;
  table.Add({{"Budget"}, RightCell("Line")});
  for (const LineWithoutBudget& line : lines)
    table.Add({{Printable(line.budget_code)}, RightCell(std::to_string(line.line_id))});
  return table;
}

ExitStatus VerifyLedger(Session& session) {
  const component::Verification found = component::VerifyLines(session.Host().Connect());
  const ExitStatus status = found.AllRight() ? ExitStatus::Done : ExitStatus::No;
  if (session.Options().json) {
    session.Print(Found(found));
    return status;
  }
  std::ostream& out = session.Out();
  if (found.AllRight()) out << Lines(found.lines) << ", all right\n";
  if (!found.drifts.empty()) {
    out << Lines(found.lines) << ", " << found.drifts.size()
        << " whose available amount is not what its totals say:\n"
        << DriftTable(found.drifts).ToText(session.Look(), "  ");
  }
  if (!found.without_budget.empty()) {
    out << Lines(found.lines) << ", " << found.without_budget.size()
        << " whose budget does not exist, so that nothing can be posted to it:\n"
        << WithoutBudgetTable(found.without_budget).ToText(session.Look(), "  ");
  }
  return status;
}

}  // namespace

ExitStatus RunVerify(Session& session) {
  return session.Reading([&] { return VerifyLedger(session); });
}

}  // namespace talvex::apps
