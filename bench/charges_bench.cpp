// Adding a charge line to a table that holds a million of them. The floor is the same call on a table that
// holds none: what is there already must not be read.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "installation.h"
#include "ledger/budget_t.h"

namespace talvex::bench {

namespace {

constexpr int kLinesATransaction = 500;

constexpr const char* kMillionLines =
    "INSERT INTO CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER, REVISION, ADMINOFFICE, BUDGETCODE, "
    "PERCENTAGESPLIT) WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N WHERE I < 1000000) "
    "SELECT I / 4, 1 + I % 4, 1, 'Office ' || (I % 40), 'BUDGET-' || (I % 10000), 100 FROM N;";

const Installation& Million() {
  static const auto installation = [] {
    auto made = std::make_unique<Installation>();
    made->Script(kMillionLines);
    return made;
  }();
  return *installation;
}

const Installation& Empty() {
  static const auto installation = std::make_unique<Installation>();
  return *installation;
}

// Requisitions of their own, numbered from above those of the million.
void AddCharges(benchmark::State& state, const Installation& (*made)()) {
  const Installation& company = made();
  RunOn(company, [&] {
    automation::Array fields({"REQUISITIONLINEID", "REQUISITIONLINENUMBER", "ADMINOFFICE", "BUDGETCODE",
                              "REVISION", "PERCENTAGESPLIT"});
    std::int32_t requisition = 1000000;
    for (auto _ : state) {
      company.Host().Transactions().Run([&] {
        for (int i = 0; i < kLinesATransaction; ++i) {
          automation::Array values({++requisition, 1, "Office 7", "BUDGET-12", 1, 100.0});
          if (BudgetT().createchargeline(fields, values) != 1) std::abort();
        }
        automation::TransactionContext::Current()->SetAbort();
      });
    }
  });
  state.SetItemsProcessed(state.iterations() * kLinesATransaction);
}

BENCHMARK_CAPTURE(AddCharges, million, &Million)
    ->Name("charge_line_on_a_million/talvex")
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(AddCharges, none, &Empty)
    ->Name("charge_line_on_a_million/floor")
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

}  // namespace

}  // namespace talvex::bench
