// Finding a default ledger account among many rules of three lines each.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "accounting/budget_manager.h"
#include "automation/collection.h"
#include "installation.h"
#include "platform/environment.h"

namespace talvex::bench {

namespace {

constexpr const char* kNow = "2026-03-16T10:00:00";  // That of the installation's clock.

// Rule i asks for a department, an amount and a list of projects. The requisition is of department D1 and
// project ERP: one rule in ten passes its first line, and most of those the others; the accounts of all but
// the last want a cost centre that is not there, so the walk goes to its end.
std::string RuleScript(int rules) {
  std::string script =
      "BEGIN; DELETE FROM ACCOUNTINGRULELINE; DELETE FROM ACCOUNTINGRULE; DELETE FROM LEDGERACCOUNT;"
      "DELETE FROM ACCOUNTINGPARAMETER;"
      "INSERT INTO ACCOUNTINGPARAMETER VALUES ('DIMENSION1', 'RequisitionCostCentre');"
      "INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT, ACCOUNTTYPE, DATEFROM, DIMENSION1)"
      " VALUES ('STRICT', 4, '2020-01-01T00:00:00', 1), ('LOOSE', 4, NULL, 2);";
  for (int i = 1; i <= rules; ++i) {
    const std::string id = std::to_string(i);
    const std::string account = i == rules ? "LOOSE" : "STRICT";
    const std::string department = i == rules ? "D1" : "D" + std::to_string(i % 10);
    script += "INSERT INTO ACCOUNTINGRULE (ACCRULEID, SEQUENCENUMBER, LEDGERACCOUNT, DATEFROM) VALUES (" +
              id + ", " + id + ", '" + account + "', '2025-01-01T00:00:00');" +
              "INSERT INTO ACCOUNTINGRULELINE (ACCRULEID, LINENUMBER, LINEDESCRIPTION, OPERATOR, FIELDVALUE)"
              " VALUES (" +
              id + ", 1, 'RequisitionDepartment', 5, '" + department + "'), (" + id +
              ", 2, 'RequisitionAmount', 4, '" + std::to_string(i / 10) + ".50'), (" + id +
              ", 3, 'RequisitionProject', 8, 'CRM;ERP;WEB');";
  }
  return script + "COMMIT;";
}

// One for all benchmarks of this file.
const Installation& CompanyWith(int rules) {
  static const auto installation = std::make_unique<Installation>();
  static int present = 0;
  if (present != rules) installation->Script(RuleScript(rules));
  present = rules;
  return *installation;
}

using Properties = std::map<std::string, std::string>;
const Properties kProperties = {{"RequisitionDepartment", "D1"},
                                {"RequisitionAmount", "1000000"},
                                {"RequisitionProject", "ERP"},
                                {"RequisitionCostCentre", ""}};

void FindOnThisThread(benchmark::State& state, const Installation& company) {
  const platform::Environment::ForThread environment(company.Host().Environment());
  const auto properties = std::make_shared<automation::Collection>();
  for (const auto& [name, value] : kProperties) properties->Add(value, name);
  for (auto _ : state) {
    const auto manager = std::make_shared<BudgetManager>();
    if (manager->getDefaultLedgerAccount(properties, LedgerAccountType::Expense) != "LOOSE") std::abort();
  }
  state.SetItemsProcessed(state.iterations());
}

// The component remembers, for each thread, which database it works on, and other files have others.
void FindWithTalvex(benchmark::State& state) {
  const Installation& company = CompanyWith(static_cast<int>(state.range(0)));
  std::thread([&] { FindOnThisThread(state, company); }).join();
}

// The same three statements and comparisons by hand: what a program does that knows all about this one schema
// and nothing else. It does not even read the names of the dimensions.
class HandWrittenSearch {
 public:
  explicit HandWrittenSearch(const std::string& path) : database_(path) {
    sqlite3_stmt* const any = database_.Prepare("SELECT 1");
    sqlite3_create_function_v2(sqlite3_db_handle(any), "GETDATE", 0, SQLITE_UTF8 | SQLITE_INNOCUOUS, nullptr,
                               &Now, nullptr, nullptr, nullptr);
    candidates_ = database_.Prepare(
        "SELECT AR.ACCRULEID FROM ACCOUNTINGRULELINE ARL, ACCOUNTINGRULE AR, LEDGERACCOUNT LA WHERE "
        "ARL.ACCRULEID = AR.ACCRULEID AND (AR.DATEFROM IS NULL OR AR.DATEFROM <= GETDATE()) AND "
        "(AR.DATETO IS NULL OR AR.DATETO >= GETDATE()) AND AR.LEDGERACCOUNT=LA.LEDGERACCOUNT AND "
        " LA.ACCOUNTTYPE=4 AND (LA.DATEFROM IS NULL OR LA.DATEFROM<=GETDATE()) AND "
        "(LA.DATETO IS NULL OR LA.DATETO>= GETDATE()) GROUP BY AR.ACCRULEID");
  }

  std::string Find(const Properties& properties) {
    const std::vector<int> candidates = ReadCandidates();
    const std::vector<int> applying = Applying(candidates, properties);
    return applying.empty() ? "" : FirstAccount(applying, properties);
  }

 private:
  struct Line {
    std::string property;
    int comparison;
    std::string field_value;
  };

  static void Now(sqlite3_context* context, int /*count*/, sqlite3_value** /*arguments*/) {
    sqlite3_result_text(context, kNow, static_cast<int>(std::strlen(kNow)), SQLITE_STATIC);
  }

  static std::string Text(sqlite3_stmt* statement, int column) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? "" : text;
  }

  static std::string IdList(const std::vector<int>& ids) {
    std::string list;
    for (const int id : ids) list.append(list.empty() ? "(" : ",").append(std::to_string(id));
    return list + ")";
  }

  // Prepared once for each list of rules, which is the same every time.
  sqlite3_stmt* Prepared(const std::string& text) {
    sqlite3_stmt*& statement = prepared_[text];
    if (statement == nullptr) statement = database_.Prepare(text.c_str());
    return statement;
  }

  std::vector<int> ReadCandidates() {
    std::vector<int> candidates;
    while (sqlite3_step(candidates_) == SQLITE_ROW) candidates.push_back(sqlite3_column_int(candidates_, 0));
    sqlite3_reset(candidates_);
    return candidates;
  }

  static std::optional<double> NumberIn(const std::string& text) {
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    return *end == '\0' ? std::optional(number) : std::nullopt;
  }

  static bool IsItem(const std::string& item, const std::string& list) {
    const std::string_view all = list;
    return all.find(";" + item + ";") != std::string_view::npos || all.starts_with(item + ";") ||
           all.ends_with(";" + item);
  }

  static bool Holds(const Line& line, const std::string& value) {
    if (line.comparison == 8) return IsItem(value, line.field_value);
    const auto p = NumberIn(value);
    const auto f = NumberIn(line.field_value);
    if (line.comparison == 5) return p && f ? *p == *f : value == line.field_value;
    return p && f ? *p >= *f : value >= line.field_value;
  }

  std::vector<int> Applying(const std::vector<int>& candidates, const Properties& properties) {
    sqlite3_stmt* const rows =
        Prepared("SELECT * FROM ACCOUNTINGRULELINE WHERE ACCRULEID IN " + IdList(candidates));
    std::unordered_map<int, std::vector<Line>> lines;
    while (sqlite3_step(rows) == SQLITE_ROW) {
      lines[sqlite3_column_int(rows, 0)].push_back(
          {Text(rows, 2), sqlite3_column_int(rows, 3), Text(rows, 4)});
    }
    sqlite3_reset(rows);
    std::vector<int> applying;
    for (const int candidate : candidates) {
      bool all = true;
      for (const Line& line : lines[candidate]) {
        all = Holds(line, properties.at(line.property));
        if (!all) break;
      }
      if (all) applying.push_back(candidate);
    }
    return applying;
  }

  std::string FirstAccount(const std::vector<int>& applying, const Properties& properties) {
    sqlite3_stmt* const rows = Prepared(
        "SELECT AR.ACCRULEID, AR.RULEDESCRIPTION, AR.SEQUENCENUMBER, LA.* FROM ACCOUNTINGRULE AR, "
        "LEDGERACCOUNT LA WHERE AR.ACCRULEID IN " +
        IdList(applying) +
        " AND AR.LEDGERACCOUNT=LA.LEDGERACCOUNT AND (LA.DATEFROM IS NULL OR LA.DATEFROM<=GETDATE()) AND "
        "(LA.DATETO IS NULL OR LA.DATETO>= GETDATE()) ORDER BY SEQUENCENUMBER ASC");
    constexpr int kAccount = 3;
    constexpr int kFirstDimension = 8;
    std::string account;
    while (account.empty() && sqlite3_step(rows) == SQLITE_ROW) {
      const bool mandatory = sqlite3_column_int(rows, kFirstDimension) == 1;
      if (!mandatory || !properties.at("RequisitionCostCentre").empty()) account = Text(rows, kAccount);
    }
    sqlite3_reset(rows);
    return account;
  }

  BareDatabase database_;
  sqlite3_stmt* candidates_ = nullptr;
  std::unordered_map<std::string, sqlite3_stmt*> prepared_;
};

void FindByHand(benchmark::State& state) {
  HandWrittenSearch search(CompanyWith(static_cast<int>(state.range(0))).DatabasePath());
  for (auto _ : state) {
    if (search.Find(kProperties) != "LOOSE") std::abort();
  }
  state.SetItemsProcessed(state.iterations());
}

// With 10, 200 and 2,000 rules; the rate of items is that of evaluations.
BENCHMARK(FindByHand)->Name("account_of_10_rules/floor")->Arg(10);
BENCHMARK(FindWithTalvex)->Name("account_of_10_rules/talvex")->Arg(10);
BENCHMARK(FindByHand)->Name("account_of_200_rules/floor")->Arg(200);
BENCHMARK(FindWithTalvex)->Name("account_of_200_rules/talvex")->Arg(200);
BENCHMARK(FindByHand)->Name("account_of_2000_rules/floor")->Arg(2000);
BENCHMARK(FindWithTalvex)->Name("account_of_2000_rules/talvex")->Arg(2000);

}  // namespace

}  // namespace talvex::bench
