// The way of one posting, or one check, through the hierarchy.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "automation/codes.h"

namespace talvex {

// The codes of a budget's parents, in the database's order, read whole, so that no connection is held open
// along the path.
[[nodiscard]] std::vector<std::string> ReadParents(const std::string& code);

// Remembers which budgets a walk has been to. A budget reachable along several paths is dealt with once, and
// its ancestors are walked once; a budget that comes up again on its own path is a loop.
class BudgetWalk {
 public:
  // Whether the budget is new. False for one whose ancestors were walked whole already. Raises error 28 for a
  // loop, for a path of more than 10,000 budgets, and when the thread is about to run out of stack.
  [[nodiscard]] bool Enter(const std::string& code);
  // The budget's ancestors are walked whole.
  void Leave(const std::string& code);

 private:
  enum class Status { OnPath, Walked };
  automation::CodeMap<Status> budgets_;
  std::size_t path_length_ = 0;
};

}  // namespace talvex
