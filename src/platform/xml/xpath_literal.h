// Texts inside XPath expressions.
#pragma once

#include <string>
#include <string_view>

namespace talvex::platform::xml {

// The text as a literal of XPath, in whichever quotes it does not hold; one that holds both kinds becomes a
// call of concat(), since XPath has no way to write a quote inside the same quotes.
[[nodiscard]] std::string XPathLiteral(std::string_view text);

}  // namespace talvex::platform::xml
