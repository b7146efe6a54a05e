#include "adapters/libxml2/names.h"

#include <libxml/chvalid.h>
#include <libxml/tree.h>
#include <libxml/xmlstring.h>

#include "adapters/libxml2/ownership.h"
#include "automation/error.h"
#include "automation/text.h"

namespace talvex::adapters::libxml2 {

void RaiseInvalid(const std::string& reason) {
  throw automation::Error(automation::error_number::kInvalidCall, kSource,
                          "Invalid procedure call: " + reason);
}

SplitName CheckedName(const std::string& name) {
  // The library's own check would stop at a NUL character.
  if (!IsXmlText(name) || xmlValidateQName(Chars(name), 0) != 0) {
    RaiseInvalid("'" + name + "' is no name in XML");
  }
  const std::size_t colon = name.find(':');
  if (colon == std::string::npos) return {{}, name};
  return {name.substr(0, colon), name.substr(colon + 1)};
}

bool IsXmlText(std::string_view text) {
  if (!automation::IsUtf8(text)) return false;
  while (!text.empty()) {
    int length = static_cast<int>(text.size() < 4 ? text.size() : 4);
    const int character = xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data()), &length);
    if (character < 0 || !xmlIsCharQ(character)) return false;
    text.remove_prefix(static_cast<std::size_t>(length));
  }
  return true;
}

void CheckText(std::string_view text) {
  if (!IsXmlText(text)) RaiseInvalid("the text holds a character that XML does not allow");
}

}  // namespace talvex::adapters::libxml2
