// What calls of the component answer with.
#pragma once

#include <string>
#include <vector>

#include "automation/dictionary.h"
#include "automation/variant.h"

namespace talvex::apps {

// The dictionary in a result. Throws Failure for anything else.
[[nodiscard]] const automation::Dictionary& DictionaryIn(const automation::Variant& result);

// Its keys, in order.
[[nodiscard]] std::vector<std::string> KeysOf(const automation::Variant& result);

}  // namespace talvex::apps
