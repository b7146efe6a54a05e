#include "ledger/budget_walk.h"

#include "automation/error.h"
#include "ledger/statements.h"
#include "platform/environment.h"
#include "services/lib_general.h"

namespace talvex {

namespace {

// What one level of a walk, its statements and the handling of an error in them need at the most.
constexpr std::size_t kStackReserve = 256UL * 1024;

// No hierarchy of budgets that anybody made on purpose is as deep, however much stack there is.
constexpr std::size_t kLongestPath = 10000;

[[noreturn]] void RaiseOutOfStack(const std::string& why) {
  throw automation::Error(automation::error_number::kOutOfStackSpace, "Talvex.BudgetT",
                          "Out of stack space: " + why);
}

}  // namespace

std::vector<std::string> ReadParents(const std::string& code) {
  const auto connection = Lib_General::getConnection();
  const auto parents = connection->Execute(ParentsOf(code), nullptr, platform::database::kOptionsUnspecified);
  std::vector<std::string> codes;
  for (; !parents->Eof(); parents->MoveNext())
    codes.push_back(Lib_General::Gen_NullToString(parents->Value("PARENTBUDGET")));
  return codes;
}

bool BudgetWalk::Enter(const std::string& code) {
  const auto [budget, is_new] = budgets_.try_emplace(code, Status::OnPath);
  if (!is_new) {
    if (budget->second == Status::OnPath) RaiseOutOfStack("budget '" + code + "' is its own ancestor");
    return false;
  }
  if (path_length_ == kLongestPath || platform::Environment::Current().stack_left() < kStackReserve) {
    RaiseOutOfStack("the hierarchy above budget '" + code + "' is too deep: it is reached through " +
                    std::to_string(path_length_) + " others");
  }
  ++path_length_;
  return true;
}

void BudgetWalk::Leave(const std::string& code) {
  budgets_.insert_or_assign(code, Status::Walked);
  --path_length_;
}

}  // namespace talvex
