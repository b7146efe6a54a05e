// Loops in the hierarchy of budgets.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/codes.h"
#include "automation/dictionary.h"
#include "types/talvex_types.h"

namespace talvex {

// The steps up from one budget to all its ancestors: each budget's steps together, in the order in which a
// walk that goes up first and sideways then comes to the budgets. A budget met again is not expanded again,
// which ends the walk on a loop.
class AncestorPairs {
 public:
  // Stores a step to each of the parents.
  void Append(const std::string& child, const automation::Dictionary& parents);
  // Whether the budget's own steps are stored. A budget without parents has none, and never counts as
  // expanded.
  [[nodiscard]] bool IsExpanded(const std::string& budget) const { return children_.contains(budget); }
  [[nodiscard]] const std::vector<HoldParents>& Pairs() const noexcept { return pairs_; }

 private:
  std::vector<HoldParents> pairs_;
  automation::CodeSet children_;
};

// The parents of budgets, each budget's read once.
class ParentBudgets {
 public:
  // Kept for as long as this object lives.
  [[nodiscard]] const automation::Dictionary& GetParentBudgets(const std::string& child);
  [[nodiscard]] AncestorPairs CollectAncestors(const std::string& budget);

 private:
  automation::CodeMap<std::shared_ptr<automation::Dictionary>> parents_;
};

// Adds a path for every step that leads back to the budget, as key and item; a path that is there already
// raises 457.
void FindLoops(const std::string& budget, const AncestorPairs& ancestors, automation::Dictionary& loops);

// The path of the loop that step `index` closes: the budget, the one right under it, and the budget again,
// each after "@@@". Of a longer loop the budgets in between are left out.
[[nodiscard]] std::string BuildLoopPath(const std::vector<HoldParents>& pairs, std::size_t index,
                                        const std::string& budget);

}  // namespace talvex
