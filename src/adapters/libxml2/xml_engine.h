// XML documents read with libxml2.
#pragma once

#include <memory>
#include <string_view>

#include "platform/xml/xml.h"

namespace talvex::adapters::libxml2 {

// Safe to use from several threads at once; a document, with its elements, belongs to one thread at a time.
// Elements are valid as long as their document.
//
// A document may have a document type, but neither one that names another file nor one that declares
// entities: those are refused as a parse error, as are documents above 100 million bytes, with more than 256
// levels below the root, with a text above 10 million bytes, or using a namespace prefix that nothing
// declares.
//
// Names of elements and attributes are matched exactly, with their prefix ("xsi:type").
class XmlEngine final : public platform::xml::Engine {
 public:
  XmlEngine();
  [[nodiscard]] std::unique_ptr<platform::xml::Document> Parse(std::string_view text) const override;
};

}  // namespace talvex::adapters::libxml2
