#include "component/import_report.h"

#include <algorithm>
#include <array>
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

// What rows are known by: the codes, and of a line the days of its period.
using Key = std::array<std::string, 3>;

struct KeyHash {
  std::size_t operator()(const Key& key) const noexcept {
    std::size_t hash = 0;
    for (const std::string& part : key) hash = hash * 31 + automation::CodeHash()(part);
    return hash;
  }
};
struct KeyEqual {
  bool operator()(const Key& a, const Key& b) const noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), automation::CodeEqual());
  }
};

// A row of a table, by column.
struct Row {
  std::string id;  // Of a line.
  std::vector<std::pair<std::string, std::string>> columns;
};
// A period can be stored more than once.
using Rows = std::unordered_map<Key, std::vector<Row>, KeyHash, KeyEqual>;

std::string Shown(const Variant& value) { return value.IsNull() ? std::string() : automation::ToText(value); }

std::string DayText(const std::string& text) {
  const auto date = automation::Date::Parse(text);
  return date ? date->DayOnly().ToText() : text;
}

Key KeyOf(const Row& row, Kind kind) {
  const auto text = [&](std::size_t column) { return row.columns[column].second; };
  if (kind == Kind::Budget) return {text(0)};
  if (kind == Kind::Relation) return {text(0), text(1)};
  return {text(0), DayText(text(1)), DayText(text(2))};
}

Rows ReadRows(const std::string& query, Kind kind) {
  const auto connection = Lib_General::getConnection();
  const auto records = connection->Execute(query, nullptr, platform::database::kOptionsUnspecified);
  Rows rows;
  for (; !records->Eof(); records->MoveNext()) {
    Row row;
    for (std::size_t i = 0; i < records->ColumnCount(); ++i)
      row.columns.emplace_back(records->ColumnName(i), Shown(records->Value(i)));
    if (kind == Kind::Line) row.id = row.columns.back().second;
    rows[KeyOf(row, kind)].push_back(std::move(row));
  }
  return rows;
}

constexpr std::size_t kAmountColumn = 3;

// What the tables hold of budgets, lines and relations.
struct Tables {
  Rows budgets = ReadRows(
      "SELECT BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID, "
      "APPROVEINBUDGET, BUDGETWARNING FROM BUDGET",
      Kind::Budget);
  Rows lines = ReadRows("SELECT BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, ID FROM BUDGETLINES ORDER BY ID",
                        Kind::Line);
  Rows relations = ReadRows("SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS", Kind::Relation);

  [[nodiscard]] const Rows& Of(Kind kind) const {
    if (kind == Kind::Budget) return budgets;
    return kind == Kind::Line ? lines : relations;
  }
};

std::string ChildText(const XmlNode& element, std::string_view name) {
  const auto children = element.Children(name);
  return children.empty() ? std::string() : children.front()->Text();
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
  Key key;
  std::string amount;  // Of a line, as a stored one shows it.
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
  arrival.key = {code};
  if (row.kind == Kind::Line) {
    const std::string start = DayText(ChildText(element, "EffectiveDate"));
    const std::string end = DayText(ChildText(element, "ExpiryDate"));
    row.detail = start + " - " + end;
    arrival.key = {code, start, end};
    if (const auto amount = automation::ParseNumber(ChildText(element, "BudgetAmnt")))
      arrival.amount = Shown(*amount);
  } else if (row.kind == Kind::Relation) {
    row.detail = ChildText(element, "ChildBudget");
    arrival.key = {code, row.detail};
  }
  return arrival;
}

// The rows in the order in which they are told of first. One that is told of again gets the messages of both.
class Arrivals {
 public:
  void Add(Arrival arrival) {
    const auto [known, is_new] = places_.try_emplace({arrival.row.sheet, arrival.row.row}, arrivals_.size());
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
  std::map<std::pair<std::string, std::int32_t>, std::size_t> places_;
};

// Nothing of the row is kept: what would have been is no outcome.
void Undo(ImportedRow& row) {
  if (row.outcome != Outcome::Inserted && row.outcome != Outcome::Changed) return;
  row.outcome = Outcome::Refused;
  row.messages = {"the whole import was undone"};
}

// What a row of the tables was before the import and is after it.
struct Fate {
  const Row* was = nullptr;  // Null for a new row.
  const Row* is = nullptr;
  bool told = false;

  [[nodiscard]] bool IsUnchanged() const { return was != nullptr && was->columns == is->columns; }
};

// Compares the tables before and after, and finds for each row that came the stored one that it was meant
// for.
class Comparison {
 public:
  explicit Comparison(const Tables& before) : before_(before) {
    for (const Kind kind : {Kind::Budget, Kind::Line, Kind::Relation})
      fates_[static_cast<std::size_t>(kind)] = FatesOf(before_.Of(kind), after_.Of(kind));
  }

  void Judge(std::vector<Arrival>& arrivals) {
    // Rows that stored lines have the amounts of come first: they are the lines of nobody else.
    std::vector<const Fate*> fates;
    for (const Arrival& arrival : arrivals)
      fates.push_back(arrival.row.messages.empty() ? Meant(arrival) : nullptr);
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
      if (fates[i] == nullptr && arrivals[i].row.messages.empty()) fates[i] = Written(arrivals[i]);
      Tell(arrivals[i].row, fates[i]);
    }
  }

 private:
  using Fates = std::unordered_map<Key, std::vector<Fate>, KeyHash, KeyEqual>;

  static Fates FatesOf(const Rows& before, const Rows& after) {
    Fates fates;
    for (const auto& [key, rows] : after) {
      const auto old_rows = before.find(key);
      for (const Row& row : rows) {
        Fate fate{nullptr, &row};
        if (old_rows != before.end()) {
          const auto old_row = std::find_if(old_rows->second.begin(), old_rows->second.end(),
                                            [&](const Row& old) { return old.id == row.id; });
          if (old_row != old_rows->second.end()) fate.was = &*old_row;
        }
        fates[key].push_back(fate);
      }
    }
    return fates;
  }

  // The first row of the key that passes and that is not told of; null when there is none. Only lines have
  // rows of their own: a budget may come more than once.
  template <class Test>
  const Fate* Find(const Arrival& arrival, Test&& passes) {
    Fates& fates = fates_[static_cast<std::size_t>(arrival.row.kind)];
    const auto found = fates.find(arrival.key);
    if (found == fates.end()) return nullptr;
    for (Fate& fate : found->second) {
      if (fate.told || !passes(fate)) continue;
      fate.told = arrival.row.kind == Kind::Line;
      return &fate;
    }
    return nullptr;
  }
  // As the ledger pairs them: the line that had the amount already, or else the one that was given it.
  const Fate* Meant(const Arrival& arrival) {
    const auto has_amount = [&](const Fate& fate) {
      return arrival.row.kind != Kind::Line || fate.is->columns[kAmountColumn].second == arrival.amount;
    };
    const Fate* kept =
        Find(arrival, [&](const Fate& fate) { return fate.IsUnchanged() && has_amount(fate); });
    return kept != nullptr ? kept : Find(arrival, has_amount);
  }
  // A database may store another amount than the one it was given.
  const Fate* Written(const Arrival& arrival) {
    return Find(arrival, [](const Fate& fate) { return !fate.IsUnchanged(); });
  }

  static void Tell(ImportedRow& row, const Fate* fate) {
    if (fate == nullptr) {
      row.outcome = Outcome::Refused;
      if (row.messages.empty()) row.messages.emplace_back("its budget was refused");
      return;
    }
    if (fate->was == nullptr) {
      row.outcome = Outcome::Inserted;
      return;
    }
    for (std::size_t i = 0; i < fate->is->columns.size(); ++i) {
      const auto& [column, now] = fate->is->columns[i];
      const std::string& was = fate->was->columns[i].second;
      if (now == was) continue;
      row.outcome = Outcome::Changed;
      std::string message = column;
      message.append(": '").append(was).append("' is now '").append(now).append("'");
      row.messages.push_back(std::move(message));
    }
  }

  const Tables& before_;
  Tables after_;
  std::array<Fates, 3> fates_;
};

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
  Comparison(before).Judge(arrivals.All());
  for (Arrival& arrival : arrivals.All()) {
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
            "), so the workbook could not be imported again: export for another user, or add the texts and "
            "teach them to the import stylesheet",
        "");
    return report;
  }
  report.file = Budget().Export(from, to, user, report.error);
  return report;
}

}  // namespace talvex::component
