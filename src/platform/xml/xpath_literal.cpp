#include "platform/xml/xpath_literal.h"

#include "automation/text.h"

namespace talvex::platform::xml {

std::string XPathLiteral(std::string_view text) {
  const std::string whole(text);
  if (text.find('\'') == std::string_view::npos) return "'" + whole + "'";
  if (text.find('"') == std::string_view::npos) return "\"" + whole + "\"";
  return "concat('" + automation::Replaced(text, "'", "',\"'\",'") + "')";
}

}  // namespace talvex::platform::xml
