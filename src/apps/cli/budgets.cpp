#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/lines_in_force.h"
#include "apps/cli/results.h"

namespace talvex::apps {

namespace {

ExitStatus ListBudgets(Session& session, const BudgetsArguments& arguments) {
  const auto connection = session.Host().Connect();
  const automation::ObjectRef ledger = session.Create("Talvex.BudgetT");
  const automation::Variant answer = arguments.standard ? ledger->Call("GetAllStandardBudgets")
                                                        : ledger->Call("GetAllBudgets", arguments.holder);
  const std::vector<std::string> codes = KeysOf(answer);
  const automation::Date day = session.Now().DayOnly();
  if (session.Options().json) {
    session.Print({{"date", DayText(day)}, {"budgets", BudgetListJson(session, *connection, codes, day)}});
  } else if (codes.empty()) {
    session.Out() << "There are no such budgets.\n";
  } else {
    session.Out() << "Budgets and what is available on " << DayText(day) << "\n\n"
                  << BudgetTable(session, *connection, codes, day).ToText(session.Look());
  }
  return ExitStatus::Done;
}

}  // namespace

ExitStatus RunBudgets(Session& session, const BudgetsArguments& arguments) {
  if (arguments.standard && !arguments.holder.empty())
    throw UsageError("--standard and --holder exclude each other");
  return session.Reading([&] { return ListBudgets(session, arguments); });
}

}  // namespace talvex::apps
