// Loops in the hierarchy against a model that closes the relation "is an ancestor of" in a matrix.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "ledger/budget_t.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

struct Graph {
  int budgets = 0;
  std::set<int> standard;
  std::set<std::pair<int, int>> under;  // Child, parent.
};

std::string Code(int budget) {
  std::string number = std::to_string(budget);
  return "B" + std::string(5 - number.size(), '0') + number;
}

std::set<std::string> LoopsByModel(const Graph& graph, int from, int to) {
  const auto size = static_cast<std::size_t>(graph.budgets);
  std::vector<std::vector<bool>> above(size, std::vector<bool>(size));
  for (const auto& [child, parent] : graph.under)
    above[static_cast<std::size_t>(child)][static_cast<std::size_t>(parent)] = true;
  for (std::size_t k = 0; k < size; ++k) {
    for (std::size_t i = 0; i < size; ++i) {
      for (std::size_t j = 0; j < size; ++j) above[i][j] = above[i][j] || (above[i][k] && above[k][j]);
    }
  }
  std::set<std::string> paths;
  for (int budget = from; budget <= to; ++budget) {
    if (!graph.standard.contains(budget)) continue;
    for (const auto& [child, parent] : graph.under) {
      // Whoever stands right under the budget and yet above it, or is it, closes a loop.
      const bool closes =
          child == budget || above[static_cast<std::size_t>(budget)][static_cast<std::size_t>(child)];
      if (parent == budget && closes)
        paths.insert("@@@" + Code(budget) + "@@@" + Code(child) + "@@@" + Code(budget));
    }
  }
  return paths;
}

void Store(const TestInstallation& site, const Graph& graph) {
  site.Sql("DELETE FROM BUDGET WHERE 1=1");
  site.Sql("DELETE FROM BUDGETRELATIONS WHERE 1=1");
  for (int budget = 0; budget < graph.budgets; ++budget) {
    site.Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('" + Code(budget) + "', " +
             (graph.standard.contains(budget) ? "1" : "2") + ")");
  }
  for (const auto& [child, parent] : graph.under) {
    site.Sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('" + Code(parent) + "', '" +
             Code(child) + "')");
  }
}

std::set<std::string> LoopsFound(int from, int to) {
  std::set<std::string> paths;
  const auto loops = BudgetT().CheckClosedLoop(Code(from), Code(to));
  for (const auto& [path, item] : loops->Entries()) {
    EXPECT_EQ(automation::Variant(path), item);
    paths.insert(path);
  }
  return paths;
}

// Each body runs in an installation of its own, its graphs stored in one transaction.
void WithSite(const std::function<void(const TestInstallation&)>& body) {
  OnOwnThread([&] {
    const TestInstallation site;
    site.Host().Transactions().Run([&] { body(site); });
  });
}

TEST(ClosedLoops, AgreeWithAModelOnRandomGraphs) {
  WithSite([](const TestInstallation& site) {
    std::size_t loops = 0;
    std::size_t without = 0;
    for (unsigned seed = 0; seed < 150; ++seed) {
      std::mt19937 random(seed);
      const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
      Graph graph;
      graph.budgets = 1 + below(12);
      for (int i = 0; i < graph.budgets; ++i) {
        if (below(4) != 0) graph.standard.insert(i);
      }
      for (int i = below(2 * graph.budgets); i > 0; --i)
        graph.under.insert({below(graph.budgets), below(graph.budgets)});
      const int from = below(graph.budgets);
      const int to = from + below(graph.budgets - from);
      Store(site, graph);
      for (const auto& [first, last] : {std::pair{0, graph.budgets - 1}, std::pair{from, to}}) {
        const auto expected = LoopsByModel(graph, first, last);
        EXPECT_EQ(LoopsFound(first, last), expected) << "seed " << seed;
        loops += expected.size();
        without += expected.empty() ? 1 : 0;
      }
    }
    EXPECT_GT(loops, 200U);
    EXPECT_GT(without, 50U);
  });
}

Graph Chain(int budgets) {
  Graph chain;
  chain.budgets = budgets;
  for (int i = 0; i < budgets; ++i) {
    chain.standard.insert(i);
    if (i > 0) chain.under.insert({i - 1, i});
  }
  return chain;
}

TEST(ClosedLoops, AreFoundAtTheEndOfAChainOfAThousand) {
  WithSite([](const TestInstallation& site) {
    Graph chain = Chain(1000);
    Store(site, chain);
    EXPECT_EQ(LoopsFound(0, 999), std::set<std::string>());
    chain.under.insert({999, 0});
    Store(site, chain);
    EXPECT_EQ(LoopsFound(0, 0), std::set<std::string>{"@@@B00000@@@B00999@@@B00000"});
    EXPECT_EQ(LoopsFound(0, 999).size(), 1000U);
  });
}

TEST(ClosedLoops, AreNotSeenInAWideDiamond) {
  WithSite([](const TestInstallation& site) {
    Graph diamond;
    diamond.budgets = 302;
    for (int i = 0; i < diamond.budgets; ++i) diamond.standard.insert(i);
    for (int i = 1; i <= 300; ++i) diamond.under.insert({{0, i}, {i, 301}});
    Store(site, diamond);
    EXPECT_EQ(LoopsFound(0, 301), std::set<std::string>());
  });
}

}  // namespace

}  // namespace talvex::test
