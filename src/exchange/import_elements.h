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

// Where an element comes from, such as "Lines 3"; the empty text when the document does not tell.
[[nodiscard]] inline std::string PlaceOf(const platform::xml::XmlNode& element) {
  std::string place;
  for (const auto& attribute : element.Attributes()) {
    if (attribute->Name() == "sheet") place = attribute->Text() + place;
    if (attribute->Name() == "row") place += " " + attribute->Text();
  }
  return place;
}

}  // namespace talvex
