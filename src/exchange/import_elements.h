// The elements of the budget import document.
#pragma once

#include <optional>
#include <string>

#include "platform/xml/xml_node.h"

namespace talvex {

// The budget code of an element: its first attribute, when that is "budgetCode". Nothing otherwise.
[[nodiscard]] inline std::optional<std::string> OwnKey(const platform::xml::XmlNode& element) {
  const auto attributes = element.Attributes();
  if (attributes.empty() || attributes.front()->Name() != "budgetCode") return std::nullopt;
  return attributes.front()->Text();
}

}  // namespace talvex
