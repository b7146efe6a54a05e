// XML documents, as far as the component reads them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace talvex::platform::xml {

// Why a text is no document; a code of 0 means that it is one.
struct ParseError {
  std::int32_t code = 0;
  std::string reason;
};

// An element of a document. A node stays valid as long as its document does.
class Element {
 public:
  virtual ~Element() = default;
  [[nodiscard]] virtual std::string Name() const = 0;
  // The text of the element and of all elements in it, in document order.
  [[nodiscard]] virtual std::string Text() const = 0;
  // The attribute's value; the empty text when the element does not have it.
  [[nodiscard]] virtual std::string Attribute(std::string_view name) const = 0;
  // The child elements of that name, in document order; of any name when it is empty.
  [[nodiscard]] virtual std::vector<std::unique_ptr<Element>> Children(std::string_view name) const = 0;
};

class Document {
 public:
  virtual ~Document() = default;
  [[nodiscard]] virtual const ParseError& Error() const noexcept = 0;
  // Null when there was a parse error.
  [[nodiscard]] virtual std::unique_ptr<Element> Root() const = 0;
};

// Reads documents without ever touching the network or another file: outside entities are refused, and sizes
// and depths are limited.
class Engine {
 public:
  virtual ~Engine() = default;
  // Always a document; a text that is not well-formed gives one with a parse error. `text` is UTF-8, whatever
  // encoding its declaration claims.
  [[nodiscard]] virtual std::unique_ptr<Document> Parse(std::string_view text) const = 0;
};

}  // namespace talvex::platform::xml
