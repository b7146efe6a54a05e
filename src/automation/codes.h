// Sets and maps of codes, as SameCode compares them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "automation/text.h"

namespace talvex::automation {

struct CodeHash {
  using is_transparent = void;
  // The same for all spellings of a code.
  [[nodiscard]] std::size_t operator()(std::string_view code) const noexcept { return FoldedHash()(code); }
};
struct CodeEqual {
  using is_transparent = void;
  [[nodiscard]] bool operator()(std::string_view a, std::string_view b) const noexcept {
    return SameCode(a, b);
  }
};

// A code is found in whatever case it is spelled, and stays as it was spelled first.
using CodeSet = std::unordered_set<std::string, CodeHash, CodeEqual>;
template <class Item>
using CodeMap = std::unordered_map<std::string, Item, CodeHash, CodeEqual>;

}  // namespace talvex::automation
