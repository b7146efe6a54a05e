// Selecting one of 10,000 standard budgets that matches only at the last level and combination, and one of
// very many that match alike.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <string>
#include <unordered_map>

#include "automation/collection.h"
#include "installation.h"
#include "ledger/budget_t.h"
#include "platform/environment.h"

namespace talvex::bench {

namespace {

// Every budget but one has an office, a charge type and dimensions that the requisition does not have. They
// look alike: each value is shared by many budgets, as offices and charge types are.
constexpr const char* kCompany =
    "INSERT INTO BUDGETDIMENSIONTYPE (BUDGETDIMTYPE1, BUDGETDIMTYPE2, BUDGETDIMTYPE3)"
    " VALUES ('Department', 'Project', 'Product');"
    "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID,"
    " APPROVEINBUDGET, BUDGETWARNING, BUDGETDIMENSION1, BUDGETDIMENSION2, BUDGETDIMENSION3)"
    " WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N WHERE I < 9999)"
    " SELECT 'BUDGET-' || I, 1, 'EUR', 'Office ' || (I % 40), 'Charge ' || (I % 60), 'holder' || (I % 25),"
    " I % 2, 10, 'Department ' || (I % 30), 'Project ' || (I % 200), 'Product ' || (I % 7) FROM N;"
    "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, OFFICEDESCRIPTION, CHARGETYPECODE)"
    " VALUES ('THE-LAST', 1, '', '');"
    "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT)"
    " SELECT BUDGETCODE, '2020-01-01T00:00:00', 1000 FROM BUDGET;";

std::unique_ptr<Installation> Made(const char* script) {
  auto installation = std::make_unique<Installation>();
  installation->Script(script);
  return installation;
}

const Installation& Company() {
  static const auto installation = Made(kCompany);
  return *installation;
}

void SelectWithTalvex(benchmark::State& state) {
  RunOn(Company(), [&] {
    auto properties = std::make_shared<automation::Collection>();
    properties->Add("Travel", "RequisitionChargeType");
    properties->Add("Nowhere", "RequisitionRequisitionerOffice");
    for (const auto* name : {"Department", "Project", "Product"}) properties->Add("Unknown", name);
    for (auto _ : state) {
      std::string code;
      BudgetT().GetBudget(properties, code, std::nullopt);
      if (code != "THE-LAST") std::abort();
    }
  });
}
BENCHMARK(SelectWithTalvex)->Name("selection/talvex")->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

// 20,000 budgets that match the first step alike, the one whose line began first being the last. 500 are
// asked for with one statement.
constexpr const char* kManyMatches =
    "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE)"
    " WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N WHERE I < 20000)"
    " SELECT 'BUDGET-' || I, 1, 'EUR', 'Nowhere', 'Travel' FROM N;"
    "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT)"
    " SELECT BUDGETCODE, '2020-01-01T00:00:00', 1000 FROM BUDGET;"
    "UPDATE BUDGETLINES SET STARTDATE = '2019-12-31T00:00:00' WHERE BUDGETCODE = 'BUDGET-20000';";

void SelectAmongManyMatches(benchmark::State& state) {
  static const auto company = Made(kManyMatches);
  RunOn(*company, [&] {
    auto properties = std::make_shared<automation::Collection>();
    properties->Add("Travel", "RequisitionChargeType");
    properties->Add("Nowhere", "RequisitionRequisitionerOffice");
    for (auto _ : state) {
      std::string code;
      BudgetT().GetBudget(properties, code, std::nullopt);
      if (code != "BUDGET-20000") std::abort();
    }
  });
}
BENCHMARK(SelectAmongManyMatches)
    ->Name("selection/20000 matches")
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// A program that knows all about this one question: it reads the rows once, whole, puts them into a hash by
// the five columns, and looks up each combination of each level.
class HandWrittenSelection {
 public:
  explicit HandWrittenSelection(const std::string& path)
      : database_(path),
        types_(database_.Prepare("SELECT BUDGETDIMTYPE1, BUDGETDIMTYPE2, BUDGETDIMTYPE3, OFFICEDESCRIPTION "
                                 "FROM BUDGETDIMENSIONTYPE WHERE OFFICEDESCRIPTION=? OR OFFICEDESCRIPTION IS "
                                 "NULL")),
        budgets_(database_.Prepare("SELECT * FROM BUDGET WHERE BUDGETTYPE=1")),
        line_(database_.Prepare("SELECT ID FROM BUDGETLINES WHERE BUDGETCODE=? and STARTDATE<=? AND "
                                "(ENDDATE>=? OR ENDDATE IS NULL)")) {}

  std::string Select(const std::string& office, const std::string& charge_type,
                     const std::array<std::string, 3>& dimensions) {
    ReadTypes(office);
    const auto rows = ReadBudgets();
    for (const auto& level : {std::array{office, charge_type}, {office, ""}, {"", charge_type}, {"", ""}}) {
      for (unsigned left_out = 0; left_out < 8; ++left_out) {
        std::string key = Part(level[0]) + Part(level[1]);
        for (unsigned i = 0; i < 3; ++i)
          key += Part((left_out & (4U >> i)) != 0 ? std::string() : dimensions[i]);
        const auto found = rows.find(key);
        if (found != rows.end() && HasLine(found->second)) return found->second;
      }
    }
    return {};
  }

 private:
  static constexpr int kColumns = 11;

  static std::string Part(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    return text + '\0';
  }
  static std::string Text(sqlite3_stmt* statement, int column) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? "" : text;
  }
  static void Bind(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }

  void ReadTypes(const std::string& office) {
    Bind(types_, 1, office);
    while (sqlite3_step(types_) == SQLITE_ROW) benchmark::DoNotOptimize(Text(types_, 0));
    sqlite3_reset(types_);
  }

  std::unordered_map<std::string, std::string> ReadBudgets() {
    std::unordered_map<std::string, std::string> rows;
    while (sqlite3_step(budgets_) == SQLITE_ROW) {
      std::array<std::string, kColumns> row;
      for (int i = 0; i < kColumns; ++i) row[static_cast<std::size_t>(i)] = Text(budgets_, i);
      rows.emplace(Part(row[3]) + Part(row[4]) + Part(row[8]) + Part(row[9]) + Part(row[10]),
                   std::move(row[0]));
    }
    sqlite3_reset(budgets_);
    return rows;
  }

  bool HasLine(const std::string& code) {
    const std::string today = "2026-03-16T00:00:00";
    Bind(line_, 1, code);
    Bind(line_, 2, today);
    Bind(line_, 3, today);
    const bool found = sqlite3_step(line_) == SQLITE_ROW;
    sqlite3_reset(line_);
    return found;
  }

  BareDatabase database_;
  sqlite3_stmt* types_;
  sqlite3_stmt* budgets_;
  sqlite3_stmt* line_;
};

void SelectByHand(benchmark::State& state) {
  HandWrittenSelection selection(Company().DatabasePath());
  for (auto _ : state) {
    if (selection.Select("Nowhere", "Travel", {"Unknown", "Unknown", "Unknown"}) != "THE-LAST") std::abort();
  }
}
BENCHMARK(SelectByHand)->Name("selection/floor")->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace

}  // namespace talvex::bench
