// XML documents kept by libxml2 and transformed by libxslt.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/xml/tree.h"

namespace talvex::adapters::libxml2 {

// Safe to use from several threads at once; a tree belongs to one thread at a time.
//
// A document may have a document type, but neither one that names another file nor one that declares entities
// or defaults of attributes: those are refused as a parse error, as are documents above 100 million bytes,
// with more than 257 elements one inside the other, with a text above 10 million bytes, or using a namespace
// prefix that nothing declares.
//
// From the first engine on, neither library opens any file or address in this process by itself: files are
// read through the environment.
class XmlEngine final : public platform::xml::Engine {
 public:
  XmlEngine();
  [[nodiscard]] std::shared_ptr<platform::xml::Tree> NewTree() const override;
  [[nodiscard]] platform::xml::Parsed ParseText(std::string_view text) const override;
  [[nodiscard]] platform::xml::Parsed ParseFile(const std::string& path) const override;
  [[nodiscard]] std::string Transform(const platform::xml::Tree& document,
                                      const platform::xml::Tree& stylesheet) const override;
};

}  // namespace talvex::adapters::libxml2
