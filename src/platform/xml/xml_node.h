// Nodes of XML documents, and lists of them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "automation/class_info.h"
#include "platform/xml/tree.h"

namespace talvex::platform::xml {

class XmlNode;
using XmlNodeRef = std::shared_ptr<XmlNode>;  // Null is no node.

// A node of a document: most of the time an element or an attribute. It keeps its document's tree alive, and
// stays what it is when it is taken out of the document or the document is loaded anew. Two objects may stand
// for one node.
class XmlNode final : public automation::Object {
  TALVEX_CLASS(XmlNode, "Platform.XmlNode", "A node of an XML document, such as an element or an attribute.");

 public:
  XmlNode(std::shared_ptr<Tree> tree, NodeHandle handle) : tree_(std::move(tree)), handle_(handle) {}
  TALVEX_READONLY(std::string, Name, "Name", "The node's name, with its prefix.");
  TALVEX_READONLY(std::string, Text, "Text",
                  "The text of the node and of all elements in it, in document order; an attribute's value.");
  TALVEX_READONLY(std::string, Xml, "Xml",
                  "The node as XML text that can stand alone, without a declaration.");
  TALVEX_METHOD(std::string, Attribute, (const std::string& name),
                "The value of the element's attribute of that name; the empty text when there is none.");

  // The element's attributes in document order, declarations of namespaces left out.
  [[nodiscard]] std::vector<XmlNodeRef> Attributes() const;
  // The child elements of that name, in document order; of any name when it is empty.
  [[nodiscard]] std::vector<XmlNodeRef> Children(std::string_view name) const;

  // Makes an element the last child of this one, taking it from where it was. 5 for a node that is no
  // element, contains this one, or belongs to another document.
  void Append(const XmlNode& child);
  // Sets an attribute of this element, in place of one of the same name, and returns it. The name may have a
  // prefix that is declared here or above. "xmlns:p" declares the prefix p for the namespace `value`; 5 when
  // it is declared already for another one. The default namespace ("xmlns") cannot be set: 5.
  XmlNodeRef SetAttribute(const std::string& name, const std::string& value);
  // Puts a text in place of all that is in this element; an empty text leaves it with a start and an end tag.
  void SetText(std::string_view text);
  // Takes the node out of its document or parent; no error when it is in none.
  void Remove();

  // Raises 5 when the node is none of that tree's.
  void CheckIsIn(const Tree& tree) const;

 private:
  friend class XmlDocument;

  std::shared_ptr<Tree> tree_;
  NodeHandle handle_;
};

// Nodes as they were selected, counted from 0. A later change of the document does not change the list.
class XmlNodeList final : public automation::Object {
  TALVEX_CLASS(XmlNodeList, "Platform.XmlNodeList", "Nodes of an XML document, counted from 0.");

 public:
  explicit XmlNodeList(std::vector<XmlNodeRef> nodes) : nodes_(std::move(nodes)) {}
  TALVEX_READONLY(std::int32_t, Count, "Count", "The number of nodes.");
  TALVEX_METHOD(std::shared_ptr<XmlNode>, Item, (std::int32_t index),
                "The node at that position from 0; no node for a position outside the list.");

  [[nodiscard]] std::vector<XmlNodeRef> Nodes() const { return nodes_; }

 private:
  std::vector<XmlNodeRef> nodes_;
};

// The handles of one tree as nodes.
[[nodiscard]] std::vector<XmlNodeRef> NodesOf(const std::shared_ptr<Tree>& tree,
                                              const std::vector<NodeHandle>& handles);

}  // namespace talvex::platform::xml
