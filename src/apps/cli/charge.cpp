#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/inputs.h"
#include "apps/cli/layout.h"
#include "apps/cli/ledger_rows.h"
#include "apps/cli/results.h"
#include "automation/conversions.h"
#include "platform/database/literals.h"

namespace talvex::apps {

namespace {

using automation::Array;
using automation::Variant;
using platform::database::NumberLiteral;

constexpr std::int32_t kCleared = 2;

std::string LineText(const RequisitionLine& line) {
  return "requisition " + std::to_string(line.requisition) + ", line " + std::to_string(line.number);
}

Json LinesJson(Connection& connection, const RequisitionLine& line) {
  Json charges = Json::array();
  ForEachRow(
      connection,
      "SELECT CHARGELINEID, REVISION, ADMINOFFICE, BUDGETCODE, PERCENTAGESPLIT FROM CHARGELINES WHERE "
      "REQUISITIONLINEID=" +
          NumberLiteral(line.requisition) + " AND REQUISITIONLINENUMBER=" + NumberLiteral(line.number) +
          " ORDER BY CHARGELINEID",
      [&](const Recordset& row) {
        charges.push_back(
            {{"id", automation::ToInt32(row.Value("CHARGELINEID"))},
             {"revision", ValueOrNull<Json>(OptionalIn(row, "REVISION", &automation::ToInt32))},
             {"office", ValueOrNull<Json>(OptionalIn(row, "ADMINOFFICE", &automation::ToText))},
             {"budget", ValueOrNull<Json>(OptionalIn(row, "BUDGETCODE", &automation::ToText))},
             {"percentage", ValueOrNull<Json>(OptionalIn(row, "PERCENTAGESPLIT", &automation::ToDouble))}});
      });
  return charges;
}

std::string CellText(const Json& value) {
  return value.is_null() ? std::string("-") : Printable(value.get<std::string>());
}

// Shows the charge lines of the requisition line after whatever was done with them.
void PrintLines(Session& session, const RequisitionLine& line, const std::string& done) {
  const auto connection = session.Host().Connect();
  const Json charges = LinesJson(*connection, line);
  if (session.Options().json) {
    session.Print(
        {{"requisition", line.requisition}, {"line", line.number}, {"done", done}, {"charges", charges}});
    return;
  }
  session.Out() << "Charges of " << LineText(line) << ": " << done << ".\n";
  if (charges.empty()) {
    session.Out() << "It is charged to no budget.\n";
    return;
  }
  Table table;
  table.Add({RightCell("Number"), {"Office"}, {"Budget"}, RightCell("Share")});
  for (const Json& charge : charges) {
    const Json& share = charge["percentage"];
    table.Add({RightCell(std::to_string(charge["id"].get<std::int32_t>())),
               {CellText(charge["office"])},
               {CellText(charge["budget"])},
               RightCell(share.is_null() ? "-" : automation::ToText(share.get<double>()) + "%")});
  }
  session.Out() << '\n' << table.ToText(session.Look(), "  ");
}

void RequireCommitted(host::Outcome outcome) {
  if (outcome == host::Outcome::Aborted)
    throw Failure("the change was undone: a vote in its transaction was for abort");
}

ExitStatus ListChargeTypes(Session& session) {
  const automation::ObjectRef ledger = session.Create("Talvex.BudgetT");
  Json types = Json::array();
  Table table;
  table.Add({{"Charge type"}, {"Ledger account"}});
  for (const std::string& code : KeysOf(ledger->Call("GetAllChargeTypes"))) {
    const std::string account = automation::ToText(ledger->Call("getLedgerAccount", code));
    types.push_back({{"chargeType", code}, {"account", account.empty() ? Json(nullptr) : Json(account)}});
    table.Add({{Printable(code)}, {account.empty() ? "-" : Printable(account)}});
  }
  if (session.Options().json) {
    session.Print({{"chargeTypes", std::move(types)}});
  } else {
    session.Out() << table.ToText(session.Look());
  }
  return ExitStatus::Done;
}

}  // namespace

ExitStatus RunChargeShow(Session& session, const RequisitionLine& line) {
  return session.Reading([&] {
    PrintLines(session, line, "as they stand");
    return ExitStatus::Done;
  });
}

ExitStatus RunChargeAdd(Session& session, const ChargeAddArguments& arguments) {
  const double percentage = AmountOf(arguments.percentage);
  std::int32_t answer = 0;
  RequireCommitted(session.InTransaction([&] {
    Variant fields = Array({"REQUISITIONLINEID", "REQUISITIONLINENUMBER", "ADMINOFFICE", "BUDGETCODE",
                            "REVISION", "PERCENTAGESPLIT"});
    Variant values = Array({arguments.line.requisition, arguments.line.number, arguments.office,
                            arguments.budget, arguments.revision, percentage});
    answer = automation::ToInt32(session.Create("Talvex.BudgetT")->Call("createchargeline", fields, values));
  }));
  const bool cleared = answer == kCleared;
  PrintLines(session, arguments.line,
             cleared ? "all taken back, as it was charged to that office and budget already" : "one added");
  return cleared ? ExitStatus::No : ExitStatus::Done;
}

ExitStatus RunChargeSplit(Session& session, const ChargeSplitArguments& arguments) {
  // The ledger does not use the first place of the lists.
  std::vector<Variant> offices(1);
  std::vector<Variant> budgets(1);
  std::vector<Variant> percentages(1);
  for (const auto& [office, budget, percentage] : arguments.shares) {
    offices.emplace_back(office);
    budgets.emplace_back(budget);
    percentages.emplace_back(AmountOf(percentage));
  }
  RequireCommitted(session.InTransaction([&] {
    Variant office_list = Array(offices);
    Variant budget_list = Array(budgets);
    Variant percentage_list = Array(percentages);
    session.Create("Talvex.BudgetT")
        ->Call("UpdateChargeline", arguments.line.requisition, arguments.line.number, arguments.revision,
               office_list, budget_list, percentage_list);
  }));
  PrintLines(session, arguments.line, "replaced");
  return ExitStatus::Done;
}

ExitStatus RunChargeDelete(Session& session, const RequisitionLine& line) {
  RequireCommitted(session.InTransaction(
      [&] { session.Create("Talvex.BudgetT")->Call("DeleteChargeline", line.requisition, line.number); }));
  PrintLines(session, line, "deleted");
  return ExitStatus::Done;
}

ExitStatus RunChargeTypes(Session& session) {
  return session.Reading([&] { return ListChargeTypes(session); });
}

ExitStatus RunChargeDropType(Session& session, const std::string& code) {
  RequireCommitted(
      session.InTransaction([&] { session.Create("Talvex.BudgetT")->Call("DeleteChargeType", code); }));
  if (session.Options().json) {
    session.Print({{"deleted", code}});
  } else {
    session.Out() << "Charge type " << Shortened(code) << " is deleted.\n";
  }
  return ExitStatus::Done;
}

}  // namespace talvex::apps
