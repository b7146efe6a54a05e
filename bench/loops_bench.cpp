// Looking for loops among budgets in a hierarchy of ten levels, ten children to a parent. The figure to look
// at is steps a second, a step being one budget times one level above it: it stays the same when the cost
// grows with budgets times depth and nothing else.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>
#include <string>

#include "installation.h"
#include "ledger/budget_t.h"

namespace talvex::bench {

namespace {

// `budgets` codes in `depth` levels of equal size, each budget under one of the level above.
std::string CompanyScript(std::int64_t budgets, std::int64_t depth) {
  const std::string count = std::to_string(budgets);
  const std::string level = std::to_string(budgets / depth);
  const std::string numbers =
      " WITH RECURSIVE N(I) AS (SELECT 0 UNION ALL SELECT I + 1 FROM N WHERE I + 1 < " + count + ")";
  return "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE)" + numbers + " SELECT 'B' || I, 1 FROM N;" +
         "INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET)" + numbers + " SELECT 'B' || ((I / " +
         level + " - 1) * " + level + " + (I % " + level + ") / 10), 'B' || I FROM N WHERE I >= " + level +
         ";";
}

const Installation& Company(std::int64_t budgets, std::int64_t depth) {
  static std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<Installation>> companies;
  auto& company = companies[{budgets, depth}];
  if (company == nullptr) {
    company = std::make_unique<Installation>();
    company->Script(CompanyScript(budgets, depth));
  }
  return *company;
}

void FindLoops(benchmark::State& state) {
  const std::int64_t budgets = state.range(0);
  const std::int64_t depth = state.range(1);
  RunOn(Company(budgets, depth), [&] {
    for (auto _ : state) {
      if (BudgetT().CheckClosedLoop("B", "C")->Count() != 0) std::abort();
    }
  });
  state.SetItemsProcessed(state.iterations() * budgets * depth);
}
BENCHMARK(FindLoops)
    ->Name("closed_loops")
    ->ArgNames({"budgets", "depth"})
    ->Args({1000, 10})
    ->Args({10000, 5})
    ->Args({10000, 10})
    ->Args({20000, 10})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

}  // namespace

}  // namespace talvex::bench
