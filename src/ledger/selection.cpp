#include "ledger/selection.h"

#include "automation/text.h"
#include "services/lib_general.h"

namespace talvex {

using automation::Collection;
using Lib_General::Gen_NullToString;

namespace {

constexpr std::size_t kCombinations = 8;

// Whether the combination compares the dimension (from 0) with the empty text.
bool LeavesOut(std::size_t combination, std::size_t dimension) {
  return (combination & (4U >> dimension)) != 0;
}

std::string TrimmedText(const automation::Variant& value) {
  return std::string(automation::Trimmed(Gen_NullToString(value)));
}

}  // namespace

std::string GetDimensionValue(Collection& properties, const std::string& type) {
  const std::string name(automation::Trimmed(type));
  return name.empty() ? std::string() : TrimmedText(properties.Item(name));
}

Dimensions DimensionValues(const platform::database::Recordset& types, Collection& properties) {
  Dimensions values;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto type = types.Value("BUDGETDIMTYPE" + std::to_string(i + 1));
    if (!type.IsNull()) values[i] = GetDimensionValue(properties, Gen_NullToString(type));
  }
  return values;
}

std::vector<std::size_t> CombinationsFor(const Dimensions& values) {
  std::vector<std::size_t> combinations;
  for (std::size_t combination = 0; combination < kCombinations; ++combination) {
    bool possible = true;
    for (std::size_t i = 0; i < values.size(); ++i) {
      possible = possible && (LeavesOut(combination, i) || !values[i].empty());
    }
    if (possible) combinations.push_back(combination);
  }
  return combinations;
}

std::string DimensionCriterion(std::size_t combination, const Dimensions& literals) {
  // The blank that is missing where all three are left out is part of the text.
  if (combination == kCombinations - 1)
    return " AND BUDGETDIMENSION1 = '' AND BUDGETDIMENSION2 ='' AND BUDGETDIMENSION3 = ''";
  std::string criterion;
  for (std::size_t i = 0; i < literals.size(); ++i) {
    criterion += " AND BUDGETDIMENSION" + std::to_string(i + 1) + " = " +
                 (LeavesOut(combination, i) ? std::string("''") : literals[i]);
  }
  return criterion;
}

}  // namespace talvex
