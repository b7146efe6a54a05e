// Budgets, their lines and their hierarchy, read from the tables to be shown.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "apps/cli/figures.h"
#include "automation/date.h"
#include "platform/database/connection.h"

namespace talvex::apps {

using platform::database::Connection;
using platform::database::Recordset;

// Runs a query and hands over every row of it, in order.
void ForEachRow(Connection& connection, const std::string& query,
                const std::function<void(const Recordset&)>& row);

// A column of the current row, converted; nothing for Null.
template <class T>
[[nodiscard]] std::optional<T> OptionalIn(const Recordset& row, std::string_view column,
                                          T (*convert)(const automation::Variant&)) {
  const automation::Variant value = row.Value(column);
  if (value.IsNull()) return std::nullopt;
  return convert(value);
}

// A budget without its lines. An optional field is Null in the table; a text is then empty.
struct BudgetRow {
  std::string code;  // As the table spells it.
  std::optional<std::int32_t> type;
  std::string currency;
  std::string office;
  std::string charge_type;
  std::string holder;
  bool approval = false;
  std::optional<double> warning_step;
};

// "standard", "aggregate", the number of any other type, or the empty text.
[[nodiscard]] std::string TypeName(const BudgetRow& budget);

struct LineRow {
  std::int32_t id = 0;
  std::string budget;
  std::optional<automation::Date> start;
  std::optional<automation::Date> end;
  std::optional<double> amount;
  std::optional<double> not_approved;
  std::optional<double> approved;
  std::optional<double> sent;
  std::optional<double> received;
  std::optional<double> closed;
  Remainder available;

  friend bool operator==(const LineRow&, const LineRow&) = default;
};

[[nodiscard]] std::optional<BudgetRow> ReadBudget(Connection& connection, std::string_view code);
// All budgets, in the order of their codes.
[[nodiscard]] std::vector<BudgetRow> ReadBudgets(Connection& connection);
// The lines of a budget, the earliest first.
[[nodiscard]] std::vector<LineRow> ReadLines(Connection& connection, std::string_view code);
[[nodiscard]] std::optional<LineRow> ReadLine(Connection& connection, std::int32_t id);
// The codes of the budgets right above one, in their order.
[[nodiscard]] std::vector<std::string> ReadParents(Connection& connection, std::string_view code);

// The fields that every answer for machines uses for a line: dates in ISO form, null for what is Null.
[[nodiscard]] nlohmann::ordered_json LineJson(const LineRow& line);
// The amounts among them, without the line's number, budget and period.
[[nodiscard]] nlohmann::ordered_json AmountsJson(const LineRow& line);

// The value, or null.
template <class Json, class T>
[[nodiscard]] Json ValueOrNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

}  // namespace talvex::apps
