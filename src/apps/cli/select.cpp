#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/lines_in_force.h"
#include "apps/cli/properties.h"
#include "apps/cli/results.h"
#include "automation/conversions.h"

namespace talvex::apps {

namespace {

using automation::Variant;

std::vector<std::string> Selected(Session& session, const SelectArguments& arguments) {
  const automation::ObjectRef ledger = session.Create("Talvex.BudgetT");
  Variant properties =
      PropertiesOf(arguments.properties, {{"RequisitionRequisitionerOffice", arguments.office},
                                          {"RequisitionChargeType", arguments.charge_type}});
  if (arguments.all) {
    Variant office = arguments.office;
    Variant charge_type = arguments.charge_type;
    return KeysOf(ledger->Call("GetRelevantBudget", properties, office, charge_type));
  }
  Variant code = "";
  ledger->Call("GetBudget", properties, code);
  const std::string text = automation::ToText(code);
  return text.empty() ? std::vector<std::string>() : std::vector{text};
}

ExitStatus AnswerSelect(Session& session, const SelectArguments& arguments) {
  const auto connection = session.Host().Connect();
  const std::vector<std::string> codes = Selected(session, arguments);
  const automation::Date day = session.Now().DayOnly();
  if (session.Options().json) {
    session.Print({{"date", DayText(day)}, {"budgets", BudgetListJson(session, *connection, codes, day)}});
  } else if (codes.empty()) {
    session.Out() << "No budget can be charged on " << DayText(day) << ".\n";
  } else {
    session.Out() << (arguments.all ? "May be charged on " : "Is charged on ") << DayText(day) << ":\n\n"
                  << BudgetTable(session, *connection, codes, day).ToText(session.Look(), "  ");
  }
  return codes.empty() ? ExitStatus::No : ExitStatus::Done;
}

}  // namespace

ExitStatus RunSelect(Session& session, const SelectArguments& arguments) {
  return session.Reading([&] { return AnswerSelect(session, arguments); });
}

}  // namespace talvex::apps
