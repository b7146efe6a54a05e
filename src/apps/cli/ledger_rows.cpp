#include "apps/cli/ledger_rows.h"

#include <nlohmann/json.hpp>

#include "automation/conversions.h"
#include "platform/database/literals.h"

namespace talvex::apps {

namespace {

using Json = nlohmann::ordered_json;
using automation::Variant;
using platform::database::TextLiteral;

constexpr std::string_view kBudgetQuery =
    "SELECT BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID, "
    "APPROVEINBUDGET, BUDGETWARNING FROM BUDGET";
constexpr std::string_view kLineQuery =
    "SELECT ID, BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDNOTAPPROVEDAMNT, USEDAPPROVEDAMNT, "
    "USEDSENDAMNT, USEDRECEIVEDAMNT, USEDCLOSEDAMNT, AVAILABLEAMNT, AVAILABLEPERC FROM BUDGETLINES";

std::string TextIn(const Recordset& row, std::string_view column) {
  const Variant value = row.Value(column);
  return value.IsNull() ? std::string() : automation::ToText(value);
}

BudgetRow BudgetIn(const Recordset& row) {
  BudgetRow budget;
  budget.code = TextIn(row, "BUDGETCODE");
  budget.type = OptionalIn(row, "BUDGETTYPE", &automation::ToInt32);
  budget.currency = TextIn(row, "CURRENCYCODE");
  budget.office = TextIn(row, "OFFICEDESCRIPTION");
  budget.charge_type = TextIn(row, "CHARGETYPECODE");
  budget.holder = TextIn(row, "USERID");
  budget.approval = OptionalIn(row, "APPROVEINBUDGET", &automation::ToInt32).value_or(0) != 0;
  budget.warning_step = OptionalIn(row, "BUDGETWARNING", &automation::ToDouble);
  return budget;
}

LineRow LineIn(const Recordset& row) {
  const auto number = [&](std::string_view column) { return OptionalIn(row, column, &automation::ToDouble); };
  LineRow line;
  line.id = automation::ToInt32(row.Value("ID"));
  line.budget = TextIn(row, "BUDGETCODE");
  line.start = OptionalIn(row, "STARTDATE", &automation::ToDate);
  line.end = OptionalIn(row, "ENDDATE", &automation::ToDate);
  line.amount = number("BUDGETAMNT");
  line.not_approved = number("USEDNOTAPPROVEDAMNT");
  line.approved = number("USEDAPPROVEDAMNT");
  line.sent = number("USEDSENDAMNT");
  line.received = number("USEDRECEIVEDAMNT");
  line.closed = number("USEDCLOSEDAMNT");
  line.available = {number("AVAILABLEAMNT"), number("AVAILABLEPERC")};
  return line;
}

template <class Row>
std::vector<Row> ReadAll(Connection& connection, const std::string& query, Row (*read)(const Recordset&)) {
  std::vector<Row> rows;
  ForEachRow(connection, query, [&](const Recordset& row) { rows.push_back(read(row)); });
  return rows;
}

template <class Row>
std::optional<Row> FirstOf(std::vector<Row> rows) {
  if (rows.empty()) return std::nullopt;
  return std::move(rows.front());
}

Json DateJson(const std::optional<automation::Date>& date) {
  return date ? Json(DayText(*date)) : Json(nullptr);
}

}  // namespace

void ForEachRow(Connection& connection, const std::string& query,
                const std::function<void(const Recordset&)>& row) {
  const auto rows = connection.Execute(query, nullptr, platform::database::kOptionsUnspecified);
  for (; !rows->Eof(); rows->MoveNext()) row(*rows);
}

std::string TypeName(const BudgetRow& budget) {
  if (!budget.type) return {};
  if (*budget.type == 1) return "standard";
  return *budget.type == 2 ? "aggregate" : std::to_string(*budget.type);
}

std::optional<BudgetRow> ReadBudget(Connection& connection, std::string_view code) {
  const std::string where = " WHERE BUDGETCODE=" + TextLiteral(code);
  return FirstOf(ReadAll(connection, std::string(kBudgetQuery) + where, &BudgetIn));
}

std::vector<BudgetRow> ReadBudgets(Connection& connection) {
  return ReadAll(connection, std::string(kBudgetQuery) + " ORDER BY BUDGETCODE", &BudgetIn);
}

std::vector<LineRow> ReadLines(Connection& connection, std::string_view code) {
  const std::string where = " WHERE BUDGETCODE=" + TextLiteral(code) + " ORDER BY STARTDATE, ID";
  return ReadAll(connection, std::string(kLineQuery) + where, &LineIn);
}

std::optional<LineRow> ReadLine(Connection& connection, std::int32_t id) {
  return FirstOf(ReadAll(connection, std::string(kLineQuery) + " WHERE ID=" + std::to_string(id), &LineIn));
}

std::vector<std::string> ReadParents(Connection& connection, std::string_view code) {
  std::vector<std::string> parents;
  ForEachRow(connection,
             "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET=" + TextLiteral(code) +
                 " ORDER BY PARENTBUDGET",
             [&](const Recordset& row) { parents.push_back(TextIn(row, "PARENTBUDGET")); });
  return parents;
}

Json AmountsJson(const LineRow& line) {
  return {{"amount", ValueOrNull<Json>(line.amount)},
          {"notApproved", ValueOrNull<Json>(line.not_approved)},
          {"approved", ValueOrNull<Json>(line.approved)},
          {"sent", ValueOrNull<Json>(line.sent)},
          {"received", ValueOrNull<Json>(line.received)},
          {"closed", ValueOrNull<Json>(line.closed)},
          {"available", ValueOrNull<Json>(line.available.amount)},
          {"availableFraction", ValueOrNull<Json>(line.available.fraction)}};
}

Json LineJson(const LineRow& line) {
  Json json = {{"line", line.id},
               {"budget", line.budget},
               {"start", DateJson(line.start)},
               {"end", DateJson(line.end)}};
  json.update(AmountsJson(line));
  return json;
}

}  // namespace talvex::apps
