// How a default ledger account was found, for whoever asks why.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "types/accounting_types.h"

namespace talvex {

// The first line of a rule that did not hold.
struct FailedLine {
  std::int32_t number = 0;
  std::string property;
  std::string value;  // Of the requisition, as text.
  RuleOperators comparison{};
  std::string field_value;
};

// A candidate rule after its lines were compared with the requisition.
struct ComparedRule {
  std::int32_t id = 0;
  bool applies = false;
  std::optional<FailedLine> failed;  // Nothing for a rule that applies, or whose lines are gone.
};

// A dimension that an account declares mandatory and that the requisition leaves empty.
struct EmptyDimension {
  std::int32_t number = 0;  // 1 to 5.
  std::string name;
};

// An applying rule whose account was looked at.
struct WalkedRule {
  std::int32_t id = 0;
  std::string account;
  std::optional<EmptyDimension> empty;  // Why it was rejected; nothing for the rule that won.
};

struct AccountDecision {
  std::string account;                 // Empty when no rule yields one.
  std::vector<ComparedRule> compared;  // All candidates, in the order in which they were compared.
  std::vector<WalkedRule> walked;      // By sequence number, up to the rule that won.
};

}  // namespace talvex
