#include "ledger/closed_loops.h"

#include "ledger/budget_t.h"
#include "ledger/statements.h"
#include "services/frame.h"

namespace talvex {

using automation::Dictionary;
using automation::SameCode;
using platform::database::TextLiteral;

void AncestorPairs::Append(const std::string& child, const Dictionary& parents) {
  for (const auto& [parent, item] : parents.Entries()) pairs_.push_back({child, parent});
  if (parents.Count() > 0) children_.insert(child);
}

const Dictionary& ParentBudgets::GetParentBudgets(const std::string& child) {
  auto& parents = parents_[child];
  if (parents == nullptr) parents = CodesOf(ParentsOf(child), "PARENTBUDGET");
  return *parents;
}

AncestorPairs ParentBudgets::CollectAncestors(const std::string& budget) {
  AncestorPairs ancestors;
  // A stack of its own instead of recursion: a hierarchy may be deeper than a thread's stack.
  std::vector<std::string> to_expand = {budget};
  while (!to_expand.empty()) {
    const std::string child = std::move(to_expand.back());
    to_expand.pop_back();
    if (ancestors.IsExpanded(child)) continue;
    const Dictionary& parents = GetParentBudgets(child);
    ancestors.Append(child, parents);
    const auto& entries = parents.Entries();
    for (auto parent = entries.rbegin(); parent != entries.rend(); ++parent)
      to_expand.push_back(parent->first);
  }
  return ancestors;
}

std::string BuildLoopPath(const std::vector<HoldParents>& pairs, std::size_t index,
                          const std::string& budget) {
  const std::string separator = "@@@";
  std::string path = separator + pairs[index].Parent;
  const std::string& current = pairs[index].Child;
  for (std::size_t i = index + 1; i-- > 0;) {
    if (!SameCode(pairs[i].Parent, current)) continue;
    path += separator + pairs[i].Parent;
    break;
  }
  return path + separator + budget;
}

void FindLoops(const std::string& budget, const AncestorPairs& ancestors, Dictionary& loops) {
  const std::vector<HoldParents>& pairs = ancestors.Pairs();
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    if (!SameCode(pairs[i].Parent, budget)) continue;
    const std::string path = BuildLoopPath(pairs, i, budget);
    loops.Add(path, path);
  }
}

std::shared_ptr<Dictionary> BudgetT::CheckClosedLoop(const std::string& iFromBudget,
                                                     const std::string& iToBudget) {
  return Reads("Talvex.BudgetT.CheckClosedLoop", [&] {
    const auto budgets =
        CodesOf("SELECT * FROM BUDGET WHERE BUDGETTYPE=1 AND BUDGETCODE>=" + TextLiteral(iFromBudget) +
                    " AND BUDGETCODE<=" + TextLiteral(iToBudget),
                "BUDGETCODE");
    auto loops = std::make_shared<Dictionary>();
    ParentBudgets hierarchy;
    for (const auto& [budget, item] : budgets->Entries())
      FindLoops(budget, hierarchy.CollectAncestors(budget), *loops);
    return loops;
  });
}

}  // namespace talvex
