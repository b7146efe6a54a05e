// The hierarchy of budgets, laid out to be drawn.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/cli/ledger_rows.h"
#include "automation/codes.h"

namespace talvex::apps {

// One place of a budget in the tree.
struct TreeRow {
  enum class Mark {
    None,
    Repeated,  // Stands above already, with everything below it.
    Loop,      // Is its own ancestor.
  };
  std::string code;
  std::string parent;     // Empty at the top.
  std::size_t depth = 0;  // 0 at the top.
  bool last = true;       // Of those with the same parent.
  Mark mark = Mark::None;
};

class Hierarchy {
 public:
  explicit Hierarchy(Connection& connection);

  // Null for a code that stands in relations alone.
  [[nodiscard]] const BudgetRow* Budget(std::string_view code) const;
  [[nodiscard]] bool Knows(std::string_view code) const;

  // The tree below one budget or, without a code, below every budget that has none above it; a ring of
  // budgets, which has no top, hangs below the first of its codes. Top down, in the order of the codes. Each
  // relation is followed once.
  [[nodiscard]] std::vector<TreeRow> Tree(const std::optional<std::string>& top) const;

 private:
  struct Walk;

  void Descend(const std::string& top, Walk& walk) const;

  automation::CodeMap<BudgetRow> budgets_;
  automation::CodeMap<std::vector<std::string>> children_;
  automation::CodeMap<bool> has_parent_;  // For every code there is.
  std::vector<std::string> codes_;        // All of them, in order.
};

}  // namespace talvex::apps
