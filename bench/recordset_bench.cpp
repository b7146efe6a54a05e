// A record set of a hundred thousand budgets: reading it, what it weighs, and filtering it.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "installation.h"
#include "platform/database/recordset.h"
#include "platform/environment.h"

namespace talvex::bench {

namespace {

using platform::database::CursorType;
using platform::database::LockType;
using platform::database::Recordset;

constexpr int kBudgets = 100000;
constexpr int kColumns = 11;
constexpr int kFilters = 1000;
constexpr const char* kQuery = "SELECT * FROM BUDGET";

// Shared by all benchmarks of this file; made when the first one runs.
const Installation& Company() {
  static const auto installation = [] {
    auto made = std::make_unique<Installation>();
    made->Script("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                 std::to_string(kBudgets) +
                 ") INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, "
                 "CHARGETYPECODE, USERID, APPROVEINBUDGET, BUDGETWARNING, BUDGETDIMENSION1, "
                 "BUDGETDIMENSION2, BUDGETDIMENSION3) SELECT printf('BUDGET-%06d', i), 1, 'EUR', 'Office "
                 "number ' || (i % 40), 'CHARGE-' || (i % 200), 'user' || (i % 500), i % 2, 12.5, 'Project ' "
                 "|| i, 'Department ' || (i % 90), '' FROM n");
    return made;
  }();
  return *installation;
}

std::shared_ptr<Recordset> OpenAll() {
  const platform::Environment::ForThread environment(Company().Host().Environment());
  auto recordset = std::make_shared<Recordset>();
  recordset->Open(kQuery, Company().Host().Connect(), CursorType::ForwardOnly, LockType::ReadOnly, 1);
  return recordset;
}

void ReadThroughRecordset(benchmark::State& state) {
  static_cast<void>(Company());
  for (auto _ : state) {
    const auto recordset = OpenAll();
    int rows = 0;
    for (; !recordset->Eof(); recordset->MoveNext(), ++rows) {
      for (std::size_t column = 0; column < kColumns; ++column)
        benchmark::DoNotOptimize(recordset->Value(column));
    }
    if (rows != kBudgets) std::abort();
  }
  state.SetItemsProcessed(state.iterations() * kBudgets);
}

struct BudgetRow {
  std::string code;
  int type;
  std::string currency;
  std::string office;
  std::string charge_type;
  std::string user;
  int approve;
  double warning;
  std::string dimension1;
  std::string dimension2;
  std::string dimension3;
};

std::string Text(sqlite3_stmt* statement, int column) {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return text == nullptr
             ? std::string()
             : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

void FetchIntoStructs(benchmark::State& state) {
  BareDatabase database(Company().DatabasePath());
  sqlite3_stmt* const statement = database.Prepare(kQuery);
  for (auto _ : state) {
    std::vector<BudgetRow> rows;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      rows.push_back({Text(statement, 0), sqlite3_column_int(statement, 1), Text(statement, 2),
                      Text(statement, 3), Text(statement, 4), Text(statement, 5),
                      sqlite3_column_int(statement, 6), sqlite3_column_double(statement, 7),
                      Text(statement, 8), Text(statement, 9), Text(statement, 10)});
    }
    sqlite3_reset(statement);
    if (rows.size() != kBudgets) std::abort();
    benchmark::DoNotOptimize(rows.data());
  }
  state.SetItemsProcessed(state.iterations() * kBudgets);
}

std::size_t BytesInUse() {
  const auto info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

// What the rows of an open set weigh, their texts not counted.
void WeighRecordset(benchmark::State& state) {
  static_cast<void>(OpenAll());  // Caches of the session are filled now and not counted.
  double beyond_texts = 0;
  for (auto _ : state) {
    const std::size_t before = BytesInUse();
    const auto recordset = OpenAll();
    const std::size_t held = BytesInUse() - before;
    std::size_t texts = 0;
    for (; !recordset->Eof(); recordset->MoveNext()) {
      for (std::size_t column = 0; column < kColumns; ++column) {
        const automation::Variant value = recordset->Value(column);
        if (value.IsString()) texts += value.As<std::string>().size();
      }
    }
    beyond_texts = static_cast<double>(held - texts) / kBudgets;
  }
  state.counters["bytes_a_row_beyond_texts"] = beyond_texts;
}

// The floor of the filters: five looks at every row, by a condition that no index can serve.
void ScanFiveTimes(benchmark::State& state) {
  const auto recordset = OpenAll();
  for (auto _ : state) {
    for (int i = 0; i < 5; ++i) {
      recordset->SetFilter("BUDGETCODE <> 'BUDGET-" + std::to_string(100000 + i) + "'");
      if (recordset->Eof()) std::abort();
    }
  }
}

// Each on a set just opened, so that building the index counts.
void FilterForThousandCodes(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const auto recordset = OpenAll();
    state.ResumeTiming();
    for (int i = 0; i < kFilters; ++i) {
      const std::string number = std::to_string(1000000 + i * 97 + 1).substr(1);
      recordset->SetFilter("BUDGETCODE='BUDGET-" + number + "'");
      if (recordset->Eof()) std::abort();
    }
  }
}

BENCHMARK(FetchIntoStructs)->Name("reading_100000_rows/floor")->Unit(benchmark::kMillisecond);
BENCHMARK(ReadThroughRecordset)->Name("reading_100000_rows/talvex")->Unit(benchmark::kMillisecond);
BENCHMARK(WeighRecordset)->Name("weight_of_100000_rows")->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(ScanFiveTimes)->Name("thousand_filters/floor")->Unit(benchmark::kMillisecond);
BENCHMARK(FilterForThousandCodes)->Name("thousand_filters/talvex")->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace talvex::bench
