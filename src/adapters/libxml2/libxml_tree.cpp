#include "adapters/libxml2/libxml_tree.h"

#include <libxml/xmlsave.h>

#include "adapters/libxml2/names.h"

namespace talvex::adapters::libxml2 {

namespace {

using platform::xml::NodeHandle;

using SaverRef = std::unique_ptr<xmlSaveCtxt, FreeWith<xmlSaveClose>>;

constexpr std::string_view kDeclaresPrefix = "xmlns:";

xmlNode* NodeOf(NodeHandle handle) { return reinterpret_cast<xmlNode*>(handle); }
NodeHandle HandleOf(xmlNode* node) { return reinterpret_cast<NodeHandle>(node); }

std::vector<NodeHandle> HandlesOf(const std::vector<xmlNode*>& nodes) {
  std::vector<NodeHandle> handles;
  handles.reserve(nodes.size());
  for (xmlNode* const node : nodes) handles.push_back(HandleOf(node));
  return handles;
}

// Whether a name, as it stands in the document, is that of an element or an attribute.
bool HasName(const xmlNs* space, const xmlChar* local, std::string_view name) {
  if (space != nullptr && space->prefix != nullptr) {
    const std::string_view prefix = View(space->prefix);
    if (!name.starts_with(prefix) || !name.substr(prefix.size()).starts_with(':')) return false;
    name.remove_prefix(prefix.size() + 1);
  }
  return View(local) == name;
}

std::string FullName(const xmlNs* space, const xmlChar* local) {
  std::string full;
  if (space != nullptr && space->prefix != nullptr) full.append(View(space->prefix)).append(":");
  return full.append(View(local));
}

std::string ContentOf(const xmlNode* node) {
  // Nearly always there is one piece of text, which need not be put together.
  const bool has_children = node->type == XML_ELEMENT_NODE || node->type == XML_ATTRIBUTE_NODE;
  const xmlNode* const only = has_children ? node->children : nullptr;
  if (only != nullptr && only->type == XML_TEXT_NODE && only->next == nullptr) {
    return std::string(View(only->content));
  }
  const TextRef content(xmlNodeGetContent(node));
  return std::string(View(content.get()));
}

std::string Written(xmlNode* node) {
  constexpr int kOptions = XML_SAVE_NO_DECL | XML_SAVE_AS_XML;
  const BufferRef buffer(Made(xmlBufferCreate()));
  {
    const SaverRef saver(Made(xmlSaveToBuffer(buffer.get(), "UTF-8", kOptions)));
    xmlSaveTree(saver.get(), node);
  }
  return std::string(View(xmlBufferContent(buffer.get())));
}

}  // namespace

LibxmlTree::~LibxmlTree() {
  // Before the document, which keeps their names.
  for (xmlNode* const node : loose_) xmlFreeNode(node);
}

NodeHandle LibxmlTree::Root() const { return HandleOf(xmlDocGetRootElement(document_.get())); }

std::vector<NodeHandle> LibxmlTree::Elements(std::string_view name) const {
  const auto* const top = reinterpret_cast<const xmlNode*>(document_.get());
  std::vector<NodeHandle> elements;
  for (xmlNode* element = NextElement(nullptr, top); element != nullptr;
       element = NextElement(element, top)) {
    if (HasName(element->ns, element->name, name)) elements.push_back(HandleOf(element));
  }
  return elements;
}

std::vector<NodeHandle> LibxmlTree::Select(const std::string& xpath) const {
  const auto pattern = IsXmlText(xpath) ? ParseAttributePattern(xpath) : std::nullopt;
  return HandlesOf(pattern ? index_.Find(*document_, *pattern) : SelectedNodes(*document_, xpath));
}

std::string LibxmlTree::Xml() const {
  std::string text;
  for (xmlNode* node = document_->children; node != nullptr; node = node->next) text += Written(node);
  return text;
}

std::string LibxmlTree::Name(NodeHandle node) const {
  const xmlNode& named = *NodeOf(node);
  switch (named.type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
      return FullName(named.ns, named.name);
    case XML_TEXT_NODE:
      return "#text";
    case XML_CDATA_SECTION_NODE:
      return "#cdata-section";
    case XML_COMMENT_NODE:
      return "#comment";
    case XML_DOCUMENT_NODE:
      return "#document";
    default:
      return std::string(View(named.name));
  }
}

std::string LibxmlTree::Text(NodeHandle node) const { return ContentOf(NodeOf(node)); }

std::string LibxmlTree::Xml(NodeHandle node) const {
  xmlNode* const written = NodeOf(node);
  if (written->type == XML_DOCUMENT_NODE) return Xml();
  // Behind a blank, the library writes an attribute as it stands in a tag.
  if (written->type == XML_ATTRIBUTE_NODE) return Written(written).substr(1);
  if (written->type != XML_ELEMENT_NODE) return Written(written);
  // A copy declares the prefixes that are declared above the element, so that the text can stand alone.
  const NodeCopy copy(Made(xmlDocCopyNode(written, document_.get(), 1)));
  return Written(copy.get());
}

std::optional<std::string> LibxmlTree::Attribute(NodeHandle node, std::string_view name) const {
  const xmlNode& element = *NodeOf(node);
  if (element.type != XML_ELEMENT_NODE) return std::nullopt;
  for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
    if (HasName(attribute->ns, attribute->name, name))
      return ContentOf(reinterpret_cast<const xmlNode*>(attribute));
  }
  if (!name.starts_with(kDeclaresPrefix)) return std::nullopt;
  for (const xmlNs* space = element.nsDef; space != nullptr; space = space->next) {
    if (View(space->prefix) == name.substr(kDeclaresPrefix.size())) return std::string(View(space->href));
  }
  return std::nullopt;
}

std::vector<NodeHandle> LibxmlTree::Attributes(NodeHandle node) const {
  const xmlNode& element = *NodeOf(node);
  std::vector<NodeHandle> attributes;
  if (element.type != XML_ELEMENT_NODE) return attributes;
  for (xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next)
    attributes.push_back(HandleOf(reinterpret_cast<xmlNode*>(attribute)));
  return attributes;
}

std::vector<NodeHandle> LibxmlTree::Children(NodeHandle node, std::string_view name) const {
  std::vector<NodeHandle> children;
  const xmlNode& parent = *NodeOf(node);
  if (parent.type != XML_ELEMENT_NODE && parent.type != XML_DOCUMENT_NODE) return children;
  for (xmlNode* child = parent.children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    if (name.empty() || HasName(child->ns, child->name, name)) children.push_back(HandleOf(child));
  }
  return children;
}

}  // namespace talvex::adapters::libxml2
