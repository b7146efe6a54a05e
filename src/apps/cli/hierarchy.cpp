#include "apps/cli/hierarchy.h"

#include <algorithm>
#include <utility>

#include "automation/conversions.h"
#include "automation/text.h"

namespace talvex::apps {

Hierarchy::Hierarchy(Connection& connection) {
  for (BudgetRow& budget : ReadBudgets(connection)) {
    has_parent_.try_emplace(budget.code, false);
    std::string code = budget.code;
    budgets_.try_emplace(std::move(code), std::move(budget));
  }
  ForEachRow(connection,
             "SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS ORDER BY PARENTBUDGET, CHILDBUDGET",
             [&](const Recordset& row) {
               const std::string parent = automation::ToText(row.Value("PARENTBUDGET"));
               const std::string child = automation::ToText(row.Value("CHILDBUDGET"));
               children_[parent].push_back(child);
               has_parent_.try_emplace(parent, false);
               has_parent_.insert_or_assign(child, true);
             });
  for (const auto& [code, has_parent] : has_parent_) codes_.push_back(code);
  std::sort(codes_.begin(), codes_.end(),
            [](const std::string& a, const std::string& b) { return automation::CompareFolded(a, b) < 0; });
}

const BudgetRow* Hierarchy::Budget(std::string_view code) const {
  const auto found = budgets_.find(code);
  return found == budgets_.end() ? nullptr : &found->second;
}

bool Hierarchy::Knows(std::string_view code) const { return has_parent_.find(code) != has_parent_.end(); }

struct Hierarchy::Walk {
  std::vector<TreeRow> rows;
  automation::CodeSet seen;
};

// Keeps the places still to be visited in a list of its own: a chain of budgets may be longer than the stack
// is deep.
void Hierarchy::Descend(const std::string& top, Walk& walk) const {
  std::vector<TreeRow> waiting = {{top, {}, 0, true, TreeRow::Mark::None}};
  std::vector<std::string> path;
  automation::CodeSet on_path;
  while (!waiting.empty()) {
    TreeRow row = std::move(waiting.back());
    waiting.pop_back();
    for (; path.size() > row.depth; path.pop_back()) on_path.erase(path.back());

    const auto below = children_.find(row.code);
    if (on_path.contains(row.code)) {
      row.mark = TreeRow::Mark::Loop;
    } else if (!walk.seen.insert(row.code).second) {
      row.mark = TreeRow::Mark::Repeated;
    } else if (below != children_.end()) {
      path.push_back(row.code);
      on_path.insert(row.code);
      // The first child is to be visited first, so it is put on top of the others.
      const std::vector<std::string>& children = below->second;
      for (std::size_t i = children.size(); i-- > 0;) {
        const bool last = i + 1 == children.size();
        waiting.push_back({children[i], row.code, row.depth + 1, last, TreeRow::Mark::None});
      }
    }
    walk.rows.push_back(std::move(row));
  }
}

std::vector<TreeRow> Hierarchy::Tree(const std::optional<std::string>& top) const {
  Walk walk;
  if (top) {
    Descend(*top, walk);
    return std::move(walk.rows);
  }
  for (const std::string& code : codes_) {
    if (!has_parent_.at(code)) Descend(code, walk);
  }
  for (const std::string& code : codes_) {
    if (!walk.seen.contains(code)) Descend(code, walk);
  }
  return std::move(walk.rows);
}

}  // namespace talvex::apps
