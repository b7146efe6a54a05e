#include <cmath>
#include <filesystem>
#include <set>

#include <nlohmann/json.hpp>

#include "apps/cli/amount_titles.h"
#include "apps/cli/commands.h"
#include "apps/cli/enumeration_argument.h"
#include "apps/cli/inputs.h"
#include "apps/cli/layout.h"
#include "apps/cli/ledger_rows.h"
#include "automation/codes.h"
#include "automation/conversions.h"
#include "automation/text.h"

namespace talvex::apps {

namespace {

using automation::Date;

constexpr std::string_view kClass = "Talvex.BudgetT";
constexpr std::string_view kMethod = "PostToBudget";

struct Posting {
  std::string code;
  double amount = 0;
  std::string currency;
  Member type;
  Date date;
};

struct Change {
  std::string currency;
  LineRow before;
  LineRow after;
};

struct Report {
  std::optional<BudgetRow> budget;
  std::optional<std::int32_t> line;  // The budget's own line that was posted to.
  std::vector<Change> changes;       // Of the budget itself and of those above it.
};

// The budget and all those above it, each once. The hierarchy may be a diamond, or even have a loop.
std::vector<std::string> WithAncestors(Connection& connection, const std::string& code) {
  std::vector<std::string> codes = {code};
  automation::CodeSet known = {code};
  for (std::size_t next = 0; next < codes.size(); ++next) {
    for (std::string& parent : ReadParents(connection, codes[next])) {
      if (known.insert(parent).second) codes.push_back(std::move(parent));
    }
  }
  return codes;
}

std::vector<LineRow> LinesOf(Connection& connection, const std::vector<std::string>& codes) {
  std::vector<LineRow> lines;
  for (const std::string& code : codes) {
    for (LineRow& line : ReadLines(connection, code)) lines.push_back(std::move(line));
  }
  return lines;
}

// Both lists were read in one transaction, in the same order: posting neither makes lines nor takes any away.
std::vector<Change> Changes(Connection& connection, std::vector<LineRow> before, std::vector<LineRow> after) {
  std::vector<Change> changes;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (before[i] == after.at(i)) continue;
    const auto budget = ReadBudget(connection, before[i].budget);
    changes.push_back({budget ? budget->currency : std::string(), std::move(before[i]), std::move(after[i])});
  }
  return changes;
}

// To be called inside a transaction.
Report Post(Session& session, const Posting& posting) {
  const auto connection = session.Host().Connect();
  const std::vector<std::string> codes = WithAncestors(*connection, posting.code);
  std::vector<LineRow> before = LinesOf(*connection, codes);

  const automation::ObjectRef ledger = session.Create(std::string(kClass));
  const std::int32_t line = automation::ToInt32(ledger->Call(
      kMethod, posting.code, posting.date, posting.amount, posting.currency, posting.type.number));
  Report report;
  report.budget = ReadBudget(*connection, posting.code);
  if (line >= 0) report.line = line;
  report.changes = Changes(*connection, std::move(before), LinesOf(*connection, codes));
  return report;
}

// The names of the mails in the installation's outbox. Whoever sends them on takes them out of it.
std::set<std::string> Mails(const Session& session) {
  std::set<std::string> names;
  std::error_code missing;
  for (const auto& entry :
       std::filesystem::directory_iterator(session.Options().directory + "/outbox", missing)) {
    if (entry.path().extension() == ".eml") names.insert(entry.path().filename().string());
  }
  return names;
}

std::vector<std::string> NewMails(const Session& session, const std::set<std::string>& before) {
  std::vector<std::string> added;
  for (const std::string& name : Mails(session)) {
    if (!before.contains(name)) added.push_back(name);
  }
  return added;
}

void PrintJson(const Session& session, const Posting& posting, const Report& report,
               const std::vector<std::string>& mails) {
  Json changes = Json::array();
  for (const Change& change : report.changes) {
    changes.push_back({{"budget", change.before.budget},
                       {"line", change.before.id},
                       {"currency", change.currency},
                       {"before", AmountsJson(change.before)},
                       {"after", AmountsJson(change.after)}});
  }
  session.Print({{"budget", posting.code},
                 {"known", report.budget.has_value()},
                 {"line", ValueOrNull<Json>(report.line)},
                 {"date", DayText(posting.date)},
                 {"amount", posting.amount},
                 {"currency", posting.currency},
                 {"type", posting.type.name},
                 {"changes", std::move(changes)},
                 {"newMails", mails}});
}

void PrintChange(const Session& session, const Change& change, const AmountTitles& titles) {
  constexpr std::size_t kBarColumns = 20;
  const Style& style = session.Look();
  const std::string arrow(style.Choose("→", "->"));
  const auto moved = [&](const std::string& title, std::optional<double> before,
                         std::optional<double> after) {
    return Table::Row{{title}, RightCell(AmountText(before)), {arrow}, RightCell(AmountText(after))};
  };
  Table amounts;
  for (const auto& [title, amount] : titles.amounts) {
    if (change.before.*amount != change.after.*amount) {
      amounts.Add(moved(title, change.before.*amount, change.after.*amount));
    }
  }
  amounts.Add(moved(titles.available, change.before.available.amount, change.after.available.amount));

  Table bars;
  for (const auto& [when, line] : {std::pair{"before", &change.before}, std::pair{"after", &change.after}}) {
    const Colour colour = ColourOf(line->available);
    bars.Add({{when},
              {BarText(line->available, kBarColumns, style), Table::Align::Left, colour},
              {PercentText(line->available.fraction), Table::Align::Right, colour}});
  }
  session.Out() << '\n'
                << Printable(change.before.budget) << ", line " << change.before.id << ", in "
                << Printable(change.currency) << '\n'
                << amounts.ToText(style, "  ") << bars.ToText(style, "  ");
}

void PrintOutcome(const Session& session, const Posting& posting, const Report& report) {
  const std::string code = Shortened(posting.code);
  const std::string day = DayText(posting.date);
  const std::string what =
      AmountText(posting.amount) + " " + Shortened(posting.currency) + " as " + posting.type.name;
  if (report.line) {
    session.Out() << "Posted " << what << " to " << code << ", line " << *report.line << ", on " << day
                  << ".\n";
  } else if (report.budget) {
    session.Out() << "Budget " << code << " has no line that takes postings on " << day << ".\n";
  } else {
    session.Out() << "There is no budget '" << code << "'.\n";
  }
  if (!report.line && !report.changes.empty()) {
    session.Out() << "Posted " << what << " to the budgets above it, on " << day << ".\n";
  }
}

void PrintText(Session& session, const Posting& posting, const Report& report,
               const std::vector<std::string>& mails) {
  PrintOutcome(session, posting, report);
  if (!report.changes.empty()) {
    const AmountTitles titles = TitlesFor(session);
    for (const Change& change : report.changes) PrintChange(session, change, titles);
  }
  if (mails.empty()) return;
  session.Out() << "\nMail waiting in outbox/, new since the posting began:\n";
  for (const std::string& mail : mails) session.Out() << "  " << mail << '\n';
}

}  // namespace

ExitStatus RunPost(Session& session, const PostArguments& arguments) {
  const double amount = AmountOf(arguments.amount);
  const Member type = ReadMember(EnumerationOf(session, kClass, kMethod), arguments.type, "type of posting");
  const Posting posting = {arguments.code, amount, arguments.currency, type, DateOf(arguments.date, session)};

  const std::set<std::string> mails_before = Mails(session);
  Report report;
  const host::Outcome outcome = session.InTransaction([&] { report = Post(session, posting); });
  if (outcome == host::Outcome::Aborted)
    throw Failure("the posting was undone: a vote in its transaction was for abort");

  const std::vector<std::string> mails = NewMails(session, mails_before);
  if (session.Options().json) {
    PrintJson(session, posting, report, mails);
  } else {
    PrintText(session, posting, report, mails);
  }
  return report.line ? ExitStatus::Done : ExitStatus::No;
}

}  // namespace talvex::apps
