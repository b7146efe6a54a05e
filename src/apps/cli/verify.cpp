#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/figures.h"
#include "apps/cli/layout.h"
#include "component/verification.h"

namespace talvex::apps {

namespace {

using component::LineDrift;

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

}  // namespace

ExitStatus RunVerify(Session& session) {
  const component::Verification found = component::VerifyLines(session.Host().Connect());
  const ExitStatus status = found.drifts.empty() ? ExitStatus::Done : ExitStatus::No;
  if (session.Options().json) {
    Json drifts = Json::array();
    for (const LineDrift& drift : found.drifts) drifts.push_back(DriftJson(drift));
    session.Print({{"lines", found.lines}, {"drifts", std::move(drifts)}});
    return status;
  }
  if (found.drifts.empty()) {
    session.Out() << Lines(found.lines) << ", all right\n";
    return status;
  }
  session.Out() << Lines(found.lines) << ", " << found.drifts.size()
                << " whose available amount is not what its totals say:\n"
                << DriftTable(found.drifts).ToText(session.Look(), "  ");
  return status;
}

}  // namespace talvex::apps
