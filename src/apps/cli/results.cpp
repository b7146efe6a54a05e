#include "apps/cli/results.h"

#include "apps/cli/session.h"

namespace talvex::apps {

const automation::Dictionary& DictionaryIn(const automation::Variant& result) {
  const auto* const dictionary =
      result.IsObject()
          ? dynamic_cast<const automation::Dictionary*>(result.As<automation::ObjectRef>().get())
          : nullptr;
  if (dictionary == nullptr) throw Failure("the component answered with something that is no dictionary");
  return *dictionary;
}

std::vector<std::string> KeysOf(const automation::Variant& result) {
  std::vector<std::string> keys;
  for (const auto& [key, item] : DictionaryIn(result).Entries()) keys.push_back(key);
  return keys;
}

}  // namespace talvex::apps
