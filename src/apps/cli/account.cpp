#include <algorithm>
#include <map>

#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/enumeration_argument.h"
#include "apps/cli/layout.h"
#include "apps/cli/properties.h"
#include "automation/class_info.h"
#include "automation/collection.h"
#include "automation/conversions.h"
#include "component/account_explanation.h"

namespace talvex::apps {

namespace {

using automation::Collection;
using automation::ObjectRef;
using automation::Variant;

constexpr const char* kClass = "Talvex.BudgetManager";

// What people know a rule by. All empty for one that somebody has deleted meanwhile.
struct Rule {
  std::string description;
  std::int32_t sequence = 0;
  std::string account;
};

struct Report {
  AccountDecision decision;
  std::string description;             // Of the account.
  std::map<std::int32_t, Rule> rules;  // The candidates, by their numbers.
  std::vector<std::int32_t> spared;    // Rules that hold behind the one that won, by sequence number.
};

std::string Text(const ObjectRef& object, const char* property) {
  return automation::ToText(object->Get(property));
}

// The object of a value class that a method gave; null when there is none.
ObjectRef ObjectIn(const Variant& value) { return value.IsObject() ? value.As<ObjectRef>() : nullptr; }

Rule ReadRule(const ObjectRef& manager, std::int32_t id) {
  const ObjectRef rule = ObjectIn(manager->Call("GetAccountingRuleDetails", id));
  if (rule == nullptr) return {};
  return {Text(rule, "RuleDescription"), automation::ToInt32(rule->Get("SequenceNumber")),
          Text(rule, "LedgerAccount")};
}

bool WasWalked(const AccountDecision& decision, std::int32_t id) {
  return std::any_of(decision.walked.begin(), decision.walked.end(),
                     [id](const WalkedRule& walked) { return walked.id == id; });
}

Report Explain(Session& session, const std::shared_ptr<Collection>& properties, std::int32_t type) {
  Report report;
  report.decision = component::ExplainDefaultAccount(properties, type);
  const AccountDecision& decision = report.decision;
  const ObjectRef manager = session.Create(kClass);
  if (const ObjectRef account = ObjectIn(manager->Call("GetLedgerAccountDetails", decision.account)))
    report.description = Text(account, "LedgerAccountDesc");
  for (const ComparedRule& compared : decision.compared) {
    report.rules[compared.id] = ReadRule(manager, compared.id);
    if (compared.applies && !WasWalked(decision, compared.id)) report.spared.push_back(compared.id);
  }
  std::stable_sort(report.spared.begin(), report.spared.end(), [&](std::int32_t a, std::int32_t b) {
    return report.rules[a].sequence < report.rules[b].sequence;
  });
  return report;
}

std::string NameOf(RuleOperators comparison) {
  for (const auto& [name, number] : DescribeEnumeration(comparison).Members()) {
    if (number == static_cast<std::int32_t>(comparison)) return name;
  }
  return std::to_string(static_cast<std::int32_t>(comparison));
}

// Everything that applied was walked through up to the winner, unless there is none.
const WalkedRule* Winner(const AccountDecision& decision) {
  if (decision.walked.empty() || decision.walked.back().empty) return nullptr;
  return &decision.walked.back();
}

Json ComparedJson(const Report& report) {
  Json list = Json::array();
  for (const ComparedRule& compared : report.decision.compared) {
    Json json = {{"rule", compared.id},
                 {"description", report.rules.at(compared.id).description},
                 {"applies", compared.applies},
                 {"failed", nullptr}};
    if (const auto& line = compared.failed) {
      json["failed"] = {{"line", line->number},
                        {"property", line->property},
                        {"value", line->value},
                        {"operator", NameOf(line->comparison)},
                        {"fieldValue", line->field_value}};
    }
    list.push_back(std::move(json));
  }
  return list;
}

Json ApplyingJson(const Report& report, std::int32_t id, const char* outcome) {
  const Rule& rule = report.rules.at(id);
  return {{"rule", id},
          {"description", rule.description},
          {"sequence", rule.sequence},
          {"account", rule.account},
          {"outcome", outcome},
          {"emptyDimension", nullptr}};
}

Json ApplyingJson(const Report& report) {
  Json list = Json::array();
  for (const WalkedRule& walked : report.decision.walked) {
    list.push_back(ApplyingJson(report, walked.id, walked.empty ? "rejected" : "chosen"));
    if (walked.empty)
      list.back()["emptyDimension"] = {{"number", walked.empty->number}, {"name", walked.empty->name}};
  }
  for (const std::int32_t id : report.spared) list.push_back(ApplyingJson(report, id, "not needed"));
  return list;
}

void PrintJson(const Session& session, const Report& report, bool explain) {
  const WalkedRule* const winner = Winner(report.decision);
  Json json = {{"account", nullptr}, {"description", nullptr}, {"rule", nullptr}};
  if (winner != nullptr) {
    json = {{"account", report.decision.account}, {"description", report.description}, {"rule", winner->id}};
  }
  if (explain) {
    json["compared"] = ComparedJson(report);
    json["applying"] = ApplyingJson(report);
  }
  session.Print(json);
}

// "2 Hardware"
std::string Titled(std::string_view title, const std::string& description) {
  return std::string(title) + (description.empty() ? "" : " " + Printable(description));
}

std::string FateOf(const ComparedRule& compared) {
  if (compared.applies) return "applies";
  if (!compared.failed) return "has no lines any more";
  const FailedLine& line = *compared.failed;
  return "line " + std::to_string(line.number) + " fails: " + Shortened(line.property) + " is '" +
         Shortened(line.value) + "', wanted " + NameOf(line.comparison) + " '" + Shortened(line.field_value) +
         "'";
}

void AddApplying(Table& table, const Report& report, std::int32_t id, const Table::Cell& outcome) {
  const Rule& rule = report.rules.at(id);
  table.Add({RightCell(std::to_string(rule.sequence)),
             RightCell(std::to_string(id)),
             {Printable(rule.description)},
             {Printable(rule.account)},
             outcome});
}

void PrintExplanation(const Session& session, const Report& report) {
  const AccountDecision& decision = report.decision;
  if (decision.compared.empty()) {
    session.Out() << "\nNo rule with lines is valid now and has a valid account of that type.\n";
    return;
  }
  Table compared;
  compared.Add({RightCell("Rule"), {}, {"Lines"}});
  for (const ComparedRule& rule : decision.compared) {
    compared.Add({RightCell(std::to_string(rule.id)),
                  {Printable(report.rules.at(rule.id).description)},
                  {FateOf(rule), Table::Align::Left, rule.applies ? Colour::Green : Colour::Plain}});
  }
  session.Out() << "\nRules, as they were compared with the requisition\n"
                << compared.ToText(session.Look(), "  ");
  if (decision.walked.empty()) return;

  Table applying;
  applying.Add({RightCell("Sequence"), RightCell("Rule"), {}, {"Account"}, {"Outcome"}});
  for (const WalkedRule& walked : decision.walked) {
    const std::string outcome = walked.empty ? "rejected: dimension " + std::to_string(walked.empty->number) +
                                                   ", " + Shortened(walked.empty->name) + ", is empty"
                                             : "chosen";
    AddApplying(applying, report, walked.id,
                {outcome, Table::Align::Left, walked.empty ? Colour::Yellow : Colour::Green});
  }
  for (const std::int32_t id : report.spared)
    AddApplying(applying, report, id, {"not needed", Table::Align::Left, Colour::Dim});
  session.Out() << "\nRules that apply, lowest sequence number first\n"
                << applying.ToText(session.Look(), "  ");
}

void PrintText(const Session& session, const Report& report, bool explain) {
  if (const WalkedRule* const winner = Winner(report.decision)) {
    session.Out() << "Ledger account " << Titled(report.decision.account, report.description) << ", by rule "
                  << Titled(std::to_string(winner->id), report.rules.at(winner->id).description) << '\n';
  } else {
    session.Out() << "No rule yields a ledger account.\n";
  }
  if (explain) PrintExplanation(session, report);
}

}  // namespace

ExitStatus RunAccount(Session& session, const AccountArguments& arguments) {
  const std::shared_ptr<Collection> properties = PropertiesOf(arguments.properties, {});
  std::int32_t type = 0;  // Of every type.
  if (!arguments.type.empty()) {
    type = ReadMember(EnumerationOf(session, kClass, "getDefaultLedgerAccount"), arguments.type,
                      "type of account")
               .number;
  }
  Report report;
  session.ReadFirst([&] { report = Explain(session, properties, type); });
  if (session.Options().json) {
    PrintJson(session, report, arguments.explain);
  } else {
    PrintText(session, report, arguments.explain);
  }
  return report.decision.account.empty() ? ExitStatus::No : ExitStatus::Done;
}

}  // namespace talvex::apps
