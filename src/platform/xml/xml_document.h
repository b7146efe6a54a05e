// XML documents: read, selected from, changed, transformed and written.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "automation/class_info.h"
#include "platform/xml/xml_node.h"

namespace talvex::platform::xml {

// Why a document could not be read.
class XmlParseError final : public automation::Object {
  TALVEX_CLASS(XmlParseError, "Platform.XmlParseError", "Why an XML document could not be read.");

 public:
  explicit XmlParseError(ParseError error) : error_(std::move(error)) {}
  TALVEX_READONLY(std::int32_t, ErrorCode, "ErrorCode", "0 when there was no error.");
  TALVEX_READONLY(std::string, Reason, "Reason",
                  "What is wrong, with the line; empty when there was no error.");
  TALVEX_READONLY(std::int32_t, Line, "Line",
                  "The line that is to blame, from 1; 0 when there was no error or no line is to blame.");

 private:
  ParseError error_;
};

// An XML document; empty until it is loaded or built. Reading and transforming are as safe as the engine's
// description in tree.h says.
class XmlDocument final : public automation::Object {
  TALVEX_CLASS(XmlDocument, "Platform.XmlDocument",
               "An XML document. Its nodes have the properties Name, Text and Xml and the method "
               "Attribute(name); a list of nodes has Count and Item(index), the index counted from 0.");

 public:
  // Error 91 when there is no environment to find the engine in.
  XmlDocument();

  TALVEX_METHOD(
      bool, LoadXml, (const std::string& text),
      "Reads the document from a text, in place of what it held, and validates it against the schema "
      "that its root names with xsi:noNamespaceSchemaLocation, if it does. The encoding that the text claims "
      "is ignored. False when it is not a valid document: it is empty then, and ParseError says why. Nodes "
      "of the document as it was before stay valid.");
  TALVEX_METHOD(
      bool, Load, (const std::string& path),
      "Reads the document from a file, in the encoding that it declares; otherwise as LoadXml. False "
      "also when the file cannot be read.");
  TALVEX_READONLY(std::string, Xml, "Xml", "The document as text, without a declaration; empty when it is.");
  TALVEX_READONLY(std::shared_ptr<XmlParseError>, ParseErrorObject, "ParseError",
                  "What was wrong at the last loading: ErrorCode (0 for nothing), Reason and Line.");
  TALVEX_READONLY(std::shared_ptr<XmlNode>, DocumentElement, "DocumentElement",
                  "The root element; no node when the document is empty.");
  TALVEX_METHOD(
      std::shared_ptr<XmlNode>, SelectSingleNode, (const std::string& xpath),
      "The first node, in document order, that an XPath 1.0 expression selects; no node when there is none. "
      "Prefixes are those that the root declares. A wrong expression raises -2147467259.");
  TALVEX_METHOD(std::shared_ptr<XmlNodeList>, SelectNodes, (const std::string& xpath),
                "All nodes that an XPath 1.0 expression selects, in document order; otherwise as "
                "SelectSingleNode.");

  [[nodiscard]] const ParseError& Error() const noexcept { return error_; }

  // The text of the document's only element of that name; the empty text when there is none, when there are
  // several, and when the document could not be read.
  [[nodiscard]] std::string TextOfOnly(std::string_view name) const;

  // A new element that is in the document's keeping but not yet in the document. With a namespace, the name's
  // prefix (or none) stands for it; without one, a prefix raises 5, as do names and characters that XML does
  // not allow.
  XmlNodeRef CreateElement(const std::string& name, const std::string& name_space = {});
  // Makes an element of this document its root; 5 when it has one.
  void SetRoot(const XmlNode& element);
  // Raises 5 when the node is not of this document, as it is loaded now.
  void CheckOwns(const XmlNode& node) const { node.CheckIsIn(*tree_); }

  // What an XSLT 1.0 stylesheet makes of this document, as UTF-8 text; neither is changed. Raises
  // -2147467259 when the stylesheet is wrong, fails or reaches outside.
  [[nodiscard]] std::string TransformedBy(const XmlDocument& stylesheet) const;

  // Writes the document to a new file, in UTF-8 with a declaration. A name that is taken raises 58.
  void Save(const std::string& path) const;

 private:
  bool Take(Parsed parsed);

  std::shared_ptr<Tree> tree_;
  ParseError error_;
};

using XmlDocumentRef = std::shared_ptr<XmlDocument>;

}  // namespace talvex::platform::xml
