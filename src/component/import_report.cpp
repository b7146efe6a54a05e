#include "component/import_report.h"

#include <map>
#include <unordered_map>

#include "automation/codes.h"
#include "automation/conversions.h"
#include "automation/decimal.h"
#include "automation/transaction_context.h"
#include "exchange/budget.h"
#include "platform/database/literals.h"
#include "services/entries.h"
#include "services/lib_error_handling.h"
#include "services/lib_general.h"

namespace talvex::component {

namespace {

using automation::Variant;
using platform::xml::XmlNode;
using Kind = ImportedRow::Kind;
using Outcome = ImportedRow::Outcome;

// A row of a table, by column.
using Row = std::vector<std::pair<std::string, std::string>>;
using Rows = automation::CodeMap<Row>;

constexpr char kBetween = '\n';

std::string Shown(const Variant& value) { return value.IsNull() ? std::string() : automation::ToText(value); }

// The rows of a query by the texts of its first `keys` columns.
Rows ReadRows(const std::string& query, std::size_t keys) {
  const auto connection = Lib_General::getConnection();
  const auto records = connection->Execute(query, nullptr, platform::database::kOptionsUnspecified);
  Rows rows;
  for (; !records->Eof(); records->MoveNext()) {
    std::string key;
    Row row;
    for (std::size_t i = 0; i < records->ColumnCount(); ++i) {
      const std::string text = Shown(records->Value(i));
      if (i < keys) key += text + kBetween;
      row.emplace_back(records->ColumnName(i), text);
    }
    rows.emplace(std::move(key), std::move(row));
  }
  return rows;
}

// What the tables hold of budgets, lines and relations.
struct Tables {
  Rows budgets = ReadRows(
      "SELECT BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID, "
      "APPROVEINBUDGET, BUDGETWARNING FROM BUDGET",
      1);
  Rows lines = ReadRows("SELECT BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT FROM BUDGETLINES", 3);
  Rows relations = ReadRows("SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS", 2);

  [[nodiscard]] const Rows& Of(Kind kind) const {
    if (kind == Kind::Budget) return budgets;
    return kind == Kind::Line ? lines : relations;
  }
};

std::string ChildText(const XmlNode& element, std::string_view name) {
  const auto children = element.Children(name);
  return children.empty() ? std::string() : children.front()->Text();
}

std::string DayText(const std::string& text) {
  const auto date = automation::Date::Parse(text);
  return date ? date->DayOnly().ToText() : text;
}

Kind KindOf(const XmlNode& element) {
  if (element.Name() == "BudgetHeader") return Kind::Budget;
  return element.Name() == "BudgetLine" ? Kind::Line : Kind::Relation;
}

// Each entry of an error text: "message-code" on a line of its own.
std::vector<std::string> Entries(std::string_view errors) {
  std::vector<std::string> entries;
  while (!errors.empty()) {
    const std::size_t end = errors.find("\r\n");
    const std::string_view entry = errors.substr(0, end);
    if (!entry.empty()) entries.emplace_back(entry);
    errors.remove_prefix(end == std::string_view::npos ? errors.size() : end + 2);
  }
  return entries;
}

// A row as it came, with the key under which the tables hold it.
struct Arrival {
  ImportedRow row;
  std::string key;
};

Arrival ArrivalOf(XmlNode& element, const std::string& code, std::string_view errors) {
  Arrival arrival;
  ImportedRow& row = arrival.row;
  row.kind = KindOf(element);
  row.code = code;
  row.sheet = element.Attribute("sheet");
  if (const auto number = automation::ParseNumber(element.Attribute("row")))
    row.row = automation::RoundToInt32(*number);
  row.messages = Entries(errors);
  arrival.key = code + kBetween;
  if (row.kind == Kind::Line) {
    const std::string start = DayText(ChildText(element, "EffectiveDate"));
    const std::string end = DayText(ChildText(element, "ExpiryDate"));
    row.detail = start + " - " + end;
    arrival.key += start + kBetween + end + kBetween;
  } else if (row.kind == Kind::Relation) {
    row.detail = ChildText(element, "ChildBudget");
    arrival.key += row.detail + kBetween;
  }
  return arrival;
}

// The rows in the order in which they are told of first. One that is told of again gets the messages of both.
class Arrivals {
 public:
  void Add(Arrival arrival) {
    const std::string place = arrival.row.sheet + kBetween + std::to_string(arrival.row.row);
    const auto [known, is_new] = places_.try_emplace(place, arrivals_.size());
    if (is_new || arrival.row.row == 0) {
      arrivals_.push_back(std::move(arrival));
      return;
    }
    auto& messages = arrivals_[known->second].row.messages;
    messages.insert(messages.end(), arrival.row.messages.begin(), arrival.row.messages.end());
  }
  [[nodiscard]] std::vector<Arrival>& All() noexcept { return arrivals_; }

 private:
  std::vector<Arrival> arrivals_;
  std::unordered_map<std::string, std::size_t> places_;
};

// Nothing of the row is kept: what would have been is no outcome.
void Undo(ImportedRow& row) {
  if (row.outcome != Outcome::Inserted && row.outcome != Outcome::Changed) return;
  row.outcome = Outcome::Refused;
  row.messages = {"the whole import was undone"};
}

// Compares the tables before and after.
void Judge(Arrival& arrival, const Tables& before, const Tables& after) {
  ImportedRow& row = arrival.row;
  const Rows& old_rows = before.Of(row.kind);
  const Rows& new_rows = after.Of(row.kind);
  const auto old_row = old_rows.find(arrival.key);
  const auto new_row = new_rows.find(arrival.key);
  if (!row.messages.empty() || new_row == new_rows.end()) {
    row.outcome = Outcome::Refused;
    if (row.messages.empty()) row.messages.emplace_back("its budget was refused");
    return;
  }
  if (old_row == old_rows.end()) {
    row.outcome = Outcome::Inserted;
    return;
  }
  for (std::size_t i = 0; i < new_row->second.size(); ++i) {
    const auto& [column, now] = new_row->second[i];
    const std::string& was = old_row->second[i].second;
    if (now == was) continue;
    row.outcome = Outcome::Changed;
    std::string message = column;
    message.append(": '").append(was).append("' is now '").append(now).append("'");
    row.messages.push_back(std::move(message));
  }
}

bool HasText(const std::string& user, const std::string& label) { return EntryText(user, label) != label; }

bool IsEmptyRange(const std::string& from, const std::string& to) {
  using platform::database::TextLiteral;
  const auto connection = Lib_General::getConnection();
  const auto count = connection->Execute(
      "SELECT COUNT(*) FROM BUDGET WHERE BUDGETCODE BETWEEN " + TextLiteral(from) + " AND " + TextLiteral(to),
      nullptr, platform::database::kOptionsUnspecified);
  return automation::ToDouble(count->Value(0)) == 0;
}

}  // namespace

ImportReport ImportWorkbook(const std::string& workbook, const std::string& user,
                            const std::function<void(std::size_t)>& progress) {
  const Tables before;
  Arrivals arrivals;
  ImportReport report;
  report.imported = Budget().Import(workbook, user, report.error,
                                    [&](XmlNode& element, const std::string& code, std::string_view errors) {
                                      arrivals.Add(ArrivalOf(element, code, errors));
                                      progress(arrivals.All().size());
                                    });
  const auto* context = automation::TransactionContext::Current();
  report.undone = context != nullptr && context->Aborted();
  const Tables after;
  for (Arrival& arrival : arrivals.All()) {
    Judge(arrival, before, after);
    if (report.undone) Undo(arrival.row);
    report.rows.push_back(std::move(arrival.row));
  }
  return report;
}

std::string WriteErrorLog(const std::string& error, const std::optional<std::string>& workbook) {
  return Budget().CreateErrorLog(error, workbook);
}

ExportReport ExportBudgets(const std::string& from, const std::string& to, const std::string& user) {
  ExportReport report;
  const bool named = IsEmptyRange(from, to) ||
                     (HasText(user, type_label::kStandard) && HasText(user, type_label::kAggregate));
  if (!named) {
    Lib_ErrorHandling::Err_AppendLine(
        report.error,
        "The types of budgets have no names in the language of user '" + user + "' (labels " +
            type_label::kStandard + " and " + type_label::kAggregate +
            "), so the workbook could not be imported again: export for another user, or add the texts",
        "");
    return report;
  }
  report.file = Budget().Export(from, to, user, report.error);
  return report;
}

}  // namespace talvex::component
