#include <algorithm>

#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "apps/cli/ledger_rows.h"
#include "apps/cli/results.h"
#include "automation/codes.h"
#include "automation/text.h"

namespace talvex::apps {

namespace {

using automation::SameCode;

constexpr std::string_view kSeparator = "@@@";

struct Loop {
  std::string text;               // As the ledger tells it.
  std::vector<std::string> path;  // From the budget up through its parents to itself.
};

// The budget and the one right under it, of "@@@A@@@C@@@A". A code may contain the separator itself, so the
// right place to part the text is where both codes are related.
std::pair<std::string, std::string> EndsOf(Connection& connection, const std::string& text) {
  const std::size_t gap = kSeparator.size();
  for (std::size_t length = 1; 3 * gap + 2 * length < text.size(); ++length) {
    const std::string budget = text.substr(text.size() - length);
    const std::string child = text.substr(2 * gap + length, text.size() - 3 * gap - 2 * length);
    if (!SameCode(text.substr(gap, length), budget)) continue;
    const std::vector<std::string> parents = ReadParents(connection, child);
    if (std::any_of(parents.begin(), parents.end(),
                    [&](const std::string& parent) { return SameCode(parent, budget); }))
      return {budget, child};
  }
  throw Failure("the ledger told a loop that is none: " + Printable(text));
}

// The shortest way from a budget up to another one, both included.
std::vector<std::string> WayUp(Connection& connection, const std::string& from, const std::string& to) {
  std::vector<std::string> codes = {from};
  std::vector<std::size_t> below = {0};
  automation::CodeSet known = {from};
  for (std::size_t next = 0; next < codes.size(); ++next) {
    if (SameCode(codes[next], to)) {
      std::vector<std::string> way = {codes[next]};
      for (std::size_t at = next; at != 0;) way.insert(way.begin(), codes[at = below[at]]);
      return way;
    }
    for (std::string& parent : ReadParents(connection, codes[next])) {
      if (!known.insert(parent).second) continue;
      codes.push_back(std::move(parent));
      below.push_back(next);
    }
  }
  return {from, to};
}

Loop LoopOf(Connection& connection, const std::string& text) {
  const auto [budget, child] = EndsOf(connection, text);
  Loop loop{text, WayUp(connection, budget, child)};
  loop.path.push_back(budget);
  return loop;
}

std::string PathText(const Loop& loop, const Style& style) {
  const std::string arrow = " " + std::string(style.Choose("→", "->")) + " ";
  std::string text;
  for (const std::string& code : loop.path) text += (text.empty() ? "" : arrow) + Printable(code);
  return text;
}

// All codes, when no range is given.
std::pair<std::string, std::string> RangeOf(const automation::ObjectRef& ledger,
                                            const LoopsArguments& arguments) {
  if (!arguments.to.empty()) return {arguments.from, arguments.to};
  if (!arguments.from.empty()) return {arguments.from, arguments.from};
  const std::vector<std::string> codes = KeysOf(ledger->Call("GetAllBudgets", ""));
  return codes.empty() ? std::pair<std::string, std::string>() : std::pair{codes.front(), codes.back()};
}

ExitStatus FindLoops(Session& session, const LoopsArguments& arguments) {
  const auto connection = session.Host().Connect();
  const automation::ObjectRef ledger = session.Create("Talvex.BudgetT");
  const auto [from, to] = RangeOf(ledger, arguments);
  std::vector<Loop> loops;
  for (const std::string& text : KeysOf(ledger->Call("CheckClosedLoop", from, to)))
    loops.push_back(LoopOf(*connection, text));
  if (session.Options().json) {
    Json found = Json::array();
    for (const Loop& loop : loops)
      found.push_back({{"budget", loop.path.front()}, {"text", loop.text}, {"path", loop.path}});
    session.Print({{"from", from}, {"to", to}, {"loops", std::move(found)}});
  } else if (loops.empty()) {
    session.Out() << "No loops.\n";
  } else {
    session.Out() << "Budgets that stand above themselves, each with the way up to itself:\n";
    for (const Loop& loop : loops) session.Out() << "  " << PathText(loop, session.Look()) << '\n';
  }
  return loops.empty() ? ExitStatus::Done : ExitStatus::No;
}

}  // namespace

ExitStatus RunLoops(Session& session, const LoopsArguments& arguments) {
  return session.Reading([&] { return FindLoops(session, arguments); });
}

}  // namespace talvex::apps
