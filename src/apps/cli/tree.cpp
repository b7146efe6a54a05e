#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/hierarchy.h"
#include "apps/cli/layout.h"
#include "apps/cli/lines_in_force.h"

namespace talvex::apps {

namespace {

using Mark = TreeRow::Mark;

Json RowJson(const TreeRow& row, const BudgetRow* budget, const std::optional<LineRow>& line) {
  const auto text = [](const std::string& value) { return value.empty() ? Json(nullptr) : Json(value); };
  return {{"budget", row.code},
          {"parent", text(row.parent)},
          {"depth", row.depth},
          {"known", budget != nullptr},
          {"type", budget == nullptr ? Json(nullptr) : text(TypeName(*budget))},
          {"currency", budget == nullptr ? Json(nullptr) : text(budget->currency)},
          {"repeated", row.mark == Mark::Repeated},
          {"loop", row.mark == Mark::Loop},
          {"line", line ? LineJson(*line) : Json(nullptr)}};
}

// The strokes before a code: which of the budgets above it have more to come below them.
class Strokes {
 public:
  explicit Strokes(const Style& style) : style_(style) {}

  std::string Before(const TreeRow& row) {
    if (row.depth == 0) return {};
    last_.resize(row.depth);
    last_.back() = row.last;
    std::string text;
    for (std::size_t level = 0; level + 1 < row.depth; ++level) {
      text.append(last_[level] ? "   " : style_.Choose("│  ", "|  "));
    }
    return text.append(row.last ? style_.Choose("└─ ", "`- ") : style_.Choose("├─ ", "|- "));
  }

 private:
  const Style& style_;
  std::vector<bool> last_;  // By level, from the second on.
};

std::string MarkText(const TreeRow& row, const BudgetRow* budget, bool goes_deeper) {
  if (row.mark == Mark::Loop) return "a loop: stands above itself";
  if (row.mark == Mark::Repeated) return "shown above";
  if (goes_deeper) return "more below: talvex tree " + Printable(row.code);
  return budget == nullptr ? "not a budget" : std::string();
}

Table::Row TextRow(std::string head, const BudgetRow* budget, const std::optional<LineRow>& line,
                   std::string mark, const Style& style) {
  Table::Row cells = {{std::move(head)},
                      {budget == nullptr ? std::string() : TypeName(*budget)},
                      {budget == nullptr ? std::string() : Printable(budget->currency)}};
  if (budget != nullptr || line) {
    AddAvailable(line, style, cells);
  } else {
    cells.insert(cells.end(), 3, Table::Cell());
  }
  cells.push_back({std::move(mark), Table::Align::Left, Colour::Dim});
  return cells;
}

void PrintText(const Session& session, const Hierarchy& hierarchy, const std::vector<TreeRow>& rows,
               LinesInForce& lines, automation::Date day) {
  // Deeper levels would not fit on any screen.
  constexpr std::size_t kDeepest = 30;
  Strokes strokes(session.Look());
  Table table;
  table.Add({{"Budget"}, {"Type"}, {"In"}, RightCell("Available")});
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const TreeRow& row = rows[i];
    if (row.depth > kDeepest) continue;
    const bool goes_deeper = i + 1 < rows.size() && rows[i + 1].depth > kDeepest;
    const BudgetRow* const budget = hierarchy.Budget(row.code);
    table.Add(TextRow(strokes.Before(row) + Printable(row.code), budget, lines.Of(row.code),
                      MarkText(row, budget, goes_deeper), session.Look()));
  }
  session.Out() << "Budgets and what is available on " << DayText(day) << "\n\n"
                << table.ToText(session.Look());
}

ExitStatus DrawTree(Session& session, const std::optional<std::string>& code) {
  const auto connection = session.Host().Connect();
  const Hierarchy hierarchy(*connection);
  if (code && !hierarchy.Knows(*code)) throw Refusal("there is no budget '" + Shortened(*code) + "'");
  const std::vector<TreeRow> rows = hierarchy.Tree(code);
  const automation::Date day = session.Now().DayOnly();
  LinesInForce lines(session, *connection, day);
  if (session.Options().json) {
    Json budgets = Json::array();
    for (const TreeRow& row : rows)
      budgets.push_back(RowJson(row, hierarchy.Budget(row.code), lines.Of(row.code)));
    session.Print({{"date", DayText(day)}, {"budgets", std::move(budgets)}});
  } else if (rows.empty()) {
    session.Out() << "There are no budgets.\n";
  } else {
    PrintText(session, hierarchy, rows, lines, day);
  }
  return ExitStatus::Done;
}

}  // namespace

ExitStatus RunTree(Session& session, const std::optional<std::string>& code) {
  return session.Reading([&] { return DrawTree(session, code); });
}

}  // namespace talvex::apps
