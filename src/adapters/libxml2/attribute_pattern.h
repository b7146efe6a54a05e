// The one form of XPath expression that imports ask over and over again.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace talvex::adapters::libxml2 {

// //element[@attribute='value']
struct AttributePattern {
  std::string element;
  std::string attribute;
  std::string value;
};

// The parts of an expression of exactly that form: names of ASCII letters, digits, "_", "-" and ".", without
// a prefix, blanks at most around "=", either quote. Nothing for any other expression, which may mean the
// same.
[[nodiscard]] std::optional<AttributePattern> ParseAttributePattern(std::string_view xpath);

}  // namespace talvex::adapters::libxml2
