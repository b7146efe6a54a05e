// The seam between XML documents as the component sees them and the engine that keeps them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talvex::platform::xml {

// Why a text or a file is no document; a code of 0 means that it is one.
struct ParseError {
  std::int32_t code = 0;
  std::string reason;     // Begins with "Line <line>: " when a line is to blame.
  std::int32_t line = 0;  // From 1; 0 when no line is to blame.
};

// A node inside a tree. What it points to is the engine's own; null is no node.
using NodeHandle = struct OpaqueNode*;

// One document's nodes. A handle is valid as long as its tree: a node that is taken out of the document, or
// never was put into it, stays with the tree until the tree goes. A tree belongs to one thread at a time.
//
// Names of elements and attributes carry their prefix ("xsi:type") and are matched exactly. Texts are UTF-8.
// What XML cannot hold raises 5: a name that is none, a character that is not allowed, an undeclared prefix,
// a second root, a node inside itself, more than 257 elements one inside the other.
class Tree {
 public:
  virtual ~Tree() = default;

  [[nodiscard]] virtual NodeHandle Root() const = 0;  // Null in an empty document.
  // The document's elements of that name, in document order.
  [[nodiscard]] virtual std::vector<NodeHandle> Elements(std::string_view name) const = 0;
  // The nodes that an XPath 1.0 expression selects from the document, in document order. Prefixes are those
  // that the root declares. An expression that is wrong, or that gives something else than nodes, raises
  // -2147467259.
  [[nodiscard]] virtual std::vector<NodeHandle> Select(const std::string& xpath) const = 0;
  // The whole document as text, without a declaration; "" for an empty one.
  [[nodiscard]] virtual std::string Xml() const = 0;

  [[nodiscard]] virtual std::string Name(NodeHandle node) const = 0;
  [[nodiscard]] virtual std::string Text(NodeHandle node) const = 0;
  [[nodiscard]] virtual std::string Xml(NodeHandle node) const = 0;
  [[nodiscard]] virtual std::optional<std::string> Attribute(NodeHandle node,
                                                             std::string_view name) const = 0;
  [[nodiscard]] virtual std::vector<NodeHandle> Attributes(NodeHandle node) const = 0;
  [[nodiscard]] virtual std::vector<NodeHandle> Children(NodeHandle node, std::string_view name) const = 0;

  virtual NodeHandle CreateElement(const std::string& name, const std::string& name_space) = 0;
  // Makes an element the last child of another one, or, with a null parent, the root.
  virtual void Append(NodeHandle parent, NodeHandle child) = 0;
  virtual NodeHandle SetAttribute(NodeHandle element, const std::string& name, const std::string& value) = 0;
  virtual void SetText(NodeHandle element, std::string_view text) = 0;
  virtual void Remove(NodeHandle node) = 0;
};

// What came of reading a document: a tree, empty when there was an error.
struct Parsed {
  std::shared_ptr<Tree> tree;
  ParseError error;
};

// Makes, reads and transforms documents. Nothing that a document, a schema or a stylesheet says ever makes an
// engine reach the network or read or write another file, except the one schema that a document names itself:
// a root with the attribute xsi:noNamespaceSchemaLocation is validated against that file, which must be whole
// by itself. Entities are refused, and sizes and depths are limited.
class Engine {
 public:
  virtual ~Engine() = default;

  [[nodiscard]] virtual std::shared_ptr<Tree> NewTree() const = 0;
  // `text` is UTF-8, whatever encoding its declaration claims.
  [[nodiscard]] virtual Parsed ParseText(std::string_view text) const = 0;
  // A file in the encoding that it declares. One that cannot be read is a parse error.
  [[nodiscard]] virtual Parsed ParseFile(const std::string& path) const = 0;
  // What an XSLT 1.0 stylesheet makes of a document, as UTF-8 text. Neither is changed. Both must come from
  // this engine. A stylesheet that is wrong, fails, or reaches for a file or the network raises -2147467259.
  [[nodiscard]] virtual std::string Transform(const Tree& document, const Tree& stylesheet) const = 0;
};

}  // namespace talvex::platform::xml
