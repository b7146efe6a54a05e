#include "adapters/libxml2/xml_engine.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "automation/text.h"

namespace talvex::adapters::libxml2 {

namespace {

using platform::xml::Document;
using platform::xml::Element;
using platform::xml::ParseError;

constexpr std::size_t kLargestDocument = 100'000'000;

struct FreeParser {
  void operator()(xmlParserCtxt* parser) const noexcept { xmlFreeParserCtxt(parser); }
};
struct FreeDocument {
  void operator()(xmlDoc* document) const noexcept { xmlFreeDoc(document); }
};
struct FreeText {
  void operator()(xmlChar* text) const noexcept { xmlFree(text); }
};
using TreeRef = std::unique_ptr<xmlDoc, FreeDocument>;

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

// The name as it stands in the document.
std::string FullName(const xmlNs* space, const xmlChar* name) {
  std::string full;
  if (space != nullptr && space->prefix != nullptr) full.append(View(space->prefix)).append(":");
  return full.append(View(name));
}

std::string ContentOf(const xmlNode* node) {
  const std::unique_ptr<xmlChar, FreeText> content(xmlNodeGetContent(node));
  return std::string(View(content.get()));
}

class XmlElement final : public Element {
 public:
  explicit XmlElement(const xmlNode* node) : node_(node) {}

  [[nodiscard]] std::string Name() const override { return FullName(node_->ns, node_->name); }
  [[nodiscard]] std::string Text() const override { return ContentOf(node_); }

  [[nodiscard]] std::string Attribute(std::string_view name) const override {
    for (const xmlAttr* attribute = node_->properties; attribute != nullptr; attribute = attribute->next) {
      if (FullName(attribute->ns, attribute->name) != name) continue;
      return ContentOf(reinterpret_cast<const xmlNode*>(attribute));
    }
    return {};
  }

  [[nodiscard]] std::vector<std::unique_ptr<Element>> Children(std::string_view name) const override {
    std::vector<std::unique_ptr<Element>> children;
    for (const xmlNode* child = node_->children; child != nullptr; child = child->next) {
      if (child->type != XML_ELEMENT_NODE) continue;
      if (name.empty() || FullName(child->ns, child->name) == name) {
        children.push_back(std::make_unique<XmlElement>(child));
      }
    }
    return children;
  }

 private:
  const xmlNode* node_;
};

class XmlDocument final : public Document {
 public:
  explicit XmlDocument(ParseError error) : error_(std::move(error)) {}
  explicit XmlDocument(TreeRef tree) : tree_(std::move(tree)) {}

  [[nodiscard]] const ParseError& Error() const noexcept override { return error_; }
  [[nodiscard]] std::unique_ptr<Element> Root() const override {
    if (tree_ == nullptr) return nullptr;
    return std::make_unique<XmlElement>(xmlDocGetRootElement(tree_.get()));
  }

 private:
  ParseError error_;
  TreeRef tree_;
};

// One reading of one text. The library calls back, as C does, with a pointer to its parser; the parser leads
// here.
class Reading {
 public:
  Reading() : parser_(xmlNewParserCtxt()) {
    if (parser_ == nullptr) throw std::bad_alloc();
    parser_->_private = this;
    parser_->sax->serror = &Reading::OnError;
    parser_->sax->internalSubset = &Reading::OnDocumentType;
    parser_->sax->entityDecl = &Reading::OnEntity;
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  [[nodiscard]] std::unique_ptr<Document> Read(std::string_view text) {
    constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    // A null pointer would fail without an explanation.
    const char* const data = text.empty() ? "" : text.data();
    TreeRef tree(
        xmlCtxtReadMemory(parser_.get(), data, static_cast<int>(text.size()), nullptr, "UTF-8", kOptions));
    if (error_.code != 0) return std::make_unique<XmlDocument>(std::move(error_));
    if (tree == nullptr) throw std::bad_alloc();  // The one failure that the library does not explain.
    return std::make_unique<XmlDocument>(std::move(tree));
  }

 private:
  static Reading& Of(void* parser) {
    return *static_cast<Reading*>(static_cast<xmlParserCtxt*>(parser)->_private);
  }

  // The first error is the one that says what is wrong; others often only follow from it.
  static void OnError(void* parser, xmlErrorPtr error) {
    if (error->level < XML_ERR_ERROR) return;
    Of(parser).Note(error->code, error->line, View(reinterpret_cast<const xmlChar*>(error->message)));
  }

  static void OnDocumentType(void* parser, const xmlChar* name, const xmlChar* outside_id,
                             const xmlChar* system_id) {
    if (outside_id != nullptr || system_id != nullptr)
      return Of(parser).Refuse("The document names an outside type");
    xmlSAX2InternalSubset(parser, name, outside_id, system_id);
  }

  static void OnEntity(void* parser, const xmlChar* name, int /*type*/, const xmlChar* /*outside_id*/,
                       const xmlChar* /*system_id*/, xmlChar* /*content*/) {
    Of(parser).Refuse("The document declares the entity " + std::string(View(name)));
  }

  void Refuse(const std::string& reason) {
    Note(XML_ERR_ENTITY_PROCESSING, xmlSAX2GetLineNumber(parser_.get()), reason + ", which is refused");
    xmlStopParser(parser_.get());
  }

  void Note(int code, int line, std::string_view message) {
    if (error_.code != 0) return;
    error_.code = code;
    error_.reason = "Line " + std::to_string(line) + ": " + automation::Replaced(message, "\n", " ");
    error_.reason.erase(error_.reason.find_last_not_of(' ') + 1);
  }

  std::unique_ptr<xmlParserCtxt, FreeParser> parser_;
  ParseError error_;
};

}  // namespace

XmlEngine::XmlEngine() { xmlInitParser(); }

std::unique_ptr<Document> XmlEngine::Parse(std::string_view text) const {
  if (text.size() > kLargestDocument) {
    const std::string reason = "The document is larger than " + std::to_string(kLargestDocument) + " bytes";
    return std::make_unique<XmlDocument>(ParseError{XML_ERR_DOCUMENT_END, reason});
  }
  // Behind the last element the library would take a NUL character for the end of the text.
  if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos) {
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(nul), '\n');
    const std::string reason = "Line " + std::to_string(line) + ": A NUL character is not allowed";
    return std::make_unique<XmlDocument>(ParseError{XML_ERR_INVALID_CHAR, reason});
  }
  return Reading().Read(text);
}

}  // namespace talvex::adapters::libxml2
