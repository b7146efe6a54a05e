#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "apps/cli/progress.h"
#include "automation/text.h"
#include "automation/transaction_context.h"
#include "component/import_report.h"

namespace talvex::apps {

namespace {

using component::ImportedRow;
using component::ImportReport;
using Kind = ImportedRow::Kind;
using Outcome = ImportedRow::Outcome;

constexpr std::array<std::pair<Outcome, const char*>, 4> kOutcomes = {{{Outcome::Inserted, "inserted"},
                                                                       {Outcome::Changed, "changed"},
                                                                       {Outcome::LeftAlone, "left alone"},
                                                                       {Outcome::Refused, "refused"}}};
constexpr std::array<std::pair<Kind, const char*>, 3> kKinds = {
    {{Kind::Budget, "budget"}, {Kind::Line, "line"}, {Kind::Relation, "relation"}}};

template <class Names, class Value>
const char* NameIn(const Names& names, Value value) {
  for (const auto& [candidate, name] : names) {
    if (candidate == value) return name;
  }
  return "";
}

// The lines of an error text, each a message, "-" and a code; the "-" goes where no code follows it. No empty
// lines.
std::vector<std::string> Messages(const std::string& error) {
  std::vector<std::string> messages;
  for (std::string_view rest = error; !rest.empty();) {
    const std::size_t end = rest.find("\r\n");
    std::string_view message = rest.substr(0, end);
    if (message.ends_with('-')) message.remove_suffix(1);
    if (!message.empty()) messages.emplace_back(message);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 2);
  }
  return messages;
}

void PrintMessages(const Session& session, const std::string& error) {
  for (const std::string& message : Messages(error)) session.Out() << "  " << Printable(message) << '\n';
}

Json RowJson(const ImportedRow& row) {
  return {{"kind", NameIn(kKinds, row.kind)},
          {"budget", row.code},
          {"detail", row.detail},
          {"sheet", row.sheet},
          {"row", row.row},
          {"outcome", NameIn(kOutcomes, row.outcome)},
          {"messages", row.messages}};
}

std::string PlaceText(const ImportedRow& row) {
  return row.row == 0 ? std::string() : Printable(row.sheet) + " " + std::to_string(row.row);
}

// How many rows of each kind met each outcome.
Table CountTable(const ImportReport& report) {
  Table table;
  Table::Row head = {{}};
  for (const auto& [outcome, name] : kOutcomes) head.push_back(RightCell(name));
  table.Add(std::move(head));
  for (const auto& [kind, kind_name] : kKinds) {
    Table::Row cells = {{std::string(kind_name) + "s"}};
    for (const auto& [outcome, name] : kOutcomes) {
      const auto count = std::count_if(report.rows.begin(), report.rows.end(),
                                       [kind = kind, outcome = outcome](const ImportedRow& row) {
                                         return row.kind == kind && row.outcome == outcome;
                                       });
      const bool alarming = outcome == Outcome::Refused && count > 0;
      cells.push_back({std::to_string(count), Table::Align::Right, alarming ? Colour::Red : Colour::Plain});
    }
    table.Add(std::move(cells));
  }
  return table;
}

// One line for every message, of refused and changed rows; in a dry run also of inserted ones, which can be
// tens of thousands.
Table DetailTable(const ImportReport& report, bool dry_run) {
  Table table;
  for (const auto& [outcome, name] : kOutcomes) {
    if (outcome == Outcome::LeftAlone || (outcome == Outcome::Inserted && !dry_run)) continue;
    for (const ImportedRow& row : report.rows) {
      if (row.outcome != outcome) continue;
      const auto add = [&, name = name, outcome = outcome](const std::string& message) {
        table.Add({{PlaceText(row)},
                   {name, Table::Align::Left, outcome == Outcome::Refused ? Colour::Red : Colour::Plain},
                   {Printable(row.code)},
                   {Printable(row.detail)},
                   {Printable(message)}});
      };
      if (row.messages.empty()) add("");
      for (const std::string& message : row.messages) add(message);
    }
  }
  return table;
}

void PrintReport(const Session& session, const ImportReport& report, const std::string& log, bool dry_run) {
  if (session.Options().json) {
    Json rows = Json::array();
    for (const ImportedRow& row : report.rows) rows.push_back(RowJson(row));
    session.Print({{"imported", report.imported},
                   {"undone", report.undone},
                   {"dryRun", dry_run},
                   {"errors", Messages(report.error)},
                   {"errorLog", log.empty() ? Json(nullptr) : Json(log)},
                   {"rows", std::move(rows)}});
    return;
  }
  if (report.rows.empty() && !report.imported) {
    session.Out() << "Nothing could be imported:\n";
    PrintMessages(session, report.error);
  } else {
    session.Out() << (dry_run ? "What an import would do; nothing was kept:\n\n" : "")
                  << CountTable(report).ToText(session.Look(), "  ");
    const std::string details = DetailTable(report, dry_run).ToText(session.Look(), "  ");
    if (!details.empty()) session.Out() << '\n' << details;
  }
  if (!log.empty()) session.Out() << "\nThe messages are in " << Printable(log) << '\n';
  if (!report.undone) return;
  session.Out() << (dry_run ? "\nThe import would be undone: something breaks on the way.\n"
                            : "\nThe import was undone: something broke on the way.\n");
}

}  // namespace

ExitStatus RunExport(Session& session, const ExportArguments& arguments) {
  component::ExportReport report;
  session.ReadFirst([&] {
    const Progress progress("Exporting");
    report = component::ExportBudgets(arguments.from, arguments.to, session.Options().user);
  });
  const bool exported = automation::Trimmed(report.error).empty();
  const std::string log = exported ? std::string() : component::WriteErrorLog(report.error, std::nullopt);
  if (session.Options().json) {
    session.Print({{"exported", exported},
                   {"file", exported ? Json(report.file) : Json(nullptr)},
                   {"errors", Messages(report.error)},
                   {"errorLog", log.empty() ? Json(nullptr) : Json(log)}});
  } else if (exported) {
    session.Out() << "Exported to " << Printable(session.Options().directory + "/")
                  << Printable(automation::Replaced(report.file, "\\", "/")) << '\n';
  } else {
    session.Out() << "The export failed:\n";
    PrintMessages(session, report.error);
    session.Out() << "The messages are in " << Printable(log) << '\n';
  }
  return exported ? ExitStatus::Done : ExitStatus::No;
}

ExitStatus RunImport(Session& session, const ImportArguments& arguments) {
  ImportReport report;
  std::string log;
  const auto write_log = [&] {
    if (!arguments.dry_run && !automation::Trimmed(report.error).empty())
      log = component::WriteErrorLog(report.error, arguments.file);
  };
  session.InTransaction([&] {
    Progress progress("Importing");
    report = component::ImportWorkbook(arguments.file, session.Options().user,
                                       [&](std::size_t rows) { progress.Count(rows); });
    progress.Done();
    // Rows are kept only when the log that tells of the others could be written. Of an attempt that is
    // undone, and perhaps repeated, it is written once the last one is over.
    if (!report.undone) write_log();
    if (arguments.dry_run) automation::TransactionContext::Current()->SetAbort();
  });
  if (report.undone) write_log();
  PrintReport(session, report, log, arguments.dry_run);
  const bool right = report.imported && !report.undone && automation::Trimmed(report.error).empty();
  return right ? ExitStatus::Done : ExitStatus::No;
}

}  // namespace talvex::apps
