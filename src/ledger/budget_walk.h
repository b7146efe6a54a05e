// The way of one posting through the hierarchy.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "automation/text.h"

namespace talvex {

// Remembers which budgets a walk has been to. A budget reachable along several paths is dealt with once, and
// its ancestors are walked once; a budget that comes up again on its own path is a loop.
class BudgetWalk {
 public:
  // Whether the budget is new. False for one whose ancestors were walked whole already. Raises error 28 for a
  // loop, and when the thread is about to run out of stack.
  [[nodiscard]] bool Enter(const std::string& code);
  // The budget's ancestors are walked whole.
  void Leave(const std::string& code);

 private:
  enum class Status { OnPath, Walked };
  std::unordered_map<std::string, Status, automation::FoldedHash, automation::FoldedEqual> budgets_;
};

}  // namespace talvex
