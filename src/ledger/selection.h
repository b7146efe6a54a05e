// What both ways of selecting budgets share: the dimension values of a requisition line, and the order in
// which they are given up, from the most specific combination to the least.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "automation/collection.h"
#include "platform/database/recordset.h"

namespace talvex {

// Three texts, one per budget dimension; the empty text where the requisition has no value.
using Dimensions = std::array<std::string, 3>;

// Office and charge type, office alone, charge type alone, neither.
inline constexpr std::size_t kSelectionLevels = 4;

// The requisition's value for a kind of dimension: the trimmed text of the property of that name, the empty
// text for Null and for a blank name. A property that is missing raises 5.
[[nodiscard]] std::string GetDimensionValue(automation::Collection& properties, const std::string& type);

// The values for the three kinds of dimension that the current row of `types` names (BUDGETDIMTYPE1 to 3).
[[nodiscard]] Dimensions DimensionValues(const platform::database::Recordset& types,
                                         automation::Collection& properties);

// The combinations to try, in order. In combination n a dimension is compared with the requisition's value,
// or, where n has the dimension's bit (4, 2, 1), with the empty text; so 0 is the most specific and 7 the
// least. Only those that ask for no value that the requisition lacks.
[[nodiscard]] std::vector<std::size_t> CombinationsFor(const Dimensions& values);

// The part of a condition that compares the dimensions, for values already written as literals. Begins with
// " AND ".
[[nodiscard]] std::string DimensionCriterion(std::size_t combination, const Dimensions& literals);

}  // namespace talvex
