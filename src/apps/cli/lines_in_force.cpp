#include "apps/cli/lines_in_force.h"

#include <nlohmann/json.hpp>

#include "automation/conversions.h"

namespace talvex::apps {

namespace {

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

}  // namespace

const std::optional<LineRow>& LinesInForce::Of(const std::string& code) {
  const auto known = lines_.find(code);
  if (known != lines_.end()) return known->second;
  const automation::Variant id = ledger_->Call("GetBudgetLine", code, day_);
  return lines_[code] = id.IsNull() ? std::nullopt : ReadLine(connection_, automation::ToInt32(id));
}

void AddAvailable(const std::optional<LineRow>& line, const Style& style, Table::Row& cells) {
  constexpr std::size_t kBarColumns = 10;
  if (!line) {
    cells.push_back({"no line", Table::Align::Right, Colour::Dim});
    cells.insert(cells.end(), 2, Table::Cell());
    return;
  }
  const Colour colour = ColourOf(line->available);
  cells.push_back(RightCell(AmountText(line->available.amount)));
  cells.push_back({BarText(line->available, kBarColumns, style), Table::Align::Left, colour});
  cells.push_back({PercentText(line->available.fraction), Table::Align::Right, colour});
}

Json BudgetSummaryJson(const std::string& code, const BudgetRow* budget, const std::optional<LineRow>& line) {
  Json json = {{"budget", code}, {"known", budget != nullptr}};
  if (budget != nullptr) {
    json.update({{"type", TextOrNull(TypeName(*budget))},
                 {"currency", TextOrNull(budget->currency)},
                 {"holder", TextOrNull(budget->holder)}});
  }
  json["line"] = line ? LineJson(*line) : Json(nullptr);
  return json;
}

Table BudgetTable(Session& session, Connection& connection, const std::vector<std::string>& codes,
                  automation::Date day) {
  LinesInForce lines(session, connection, day);
  Table table;
  table.Add({{"Budget"}, {"Type"}, {"In"}, {"Holder"}, RightCell("Available")});
  for (const std::string& code : codes) {
    const BudgetRow budget = ReadBudget(connection, code).value_or(BudgetRow());
    Table::Row cells = {
        {Printable(code)}, {TypeName(budget)}, {Printable(budget.currency)}, {Printable(budget.holder)}};
    AddAvailable(lines.Of(code), session.Look(), cells);
    table.Add(std::move(cells));
  }
  return table;
}

Json BudgetListJson(Session& session, Connection& connection, const std::vector<std::string>& codes,
                    automation::Date day) {
  LinesInForce lines(session, connection, day);
  Json budgets = Json::array();
  for (const std::string& code : codes) {
    const auto budget = ReadBudget(connection, code);
    budgets.push_back(BudgetSummaryJson(code, budget ? &*budget : nullptr, lines.Of(code)));
  }
  return budgets;
}

}  // namespace talvex::apps
