#include "adapters/libxml2/xpath.h"

#include <libxml/xpathInternals.h>

#include "adapters/libxml2/complaints.h"
#include "adapters/libxml2/names.h"

namespace talvex::adapters::libxml2 {

namespace {

using ContextRef = std::unique_ptr<xmlXPathContext, FreeWith<xmlXPathFreeContext>>;
using ResultRef = std::unique_ptr<xmlXPathObject, FreeWith<xmlXPathFreeObject>>;

constexpr std::string_view kXPathFails = "The XPath expression cannot be evaluated";

xmlNode* FirstElement(xmlNode* node) {
  while (node != nullptr && node->type != XML_ELEMENT_NODE) node = node->next;
  return node;
}

void DeclarePrefixes(xmlXPathContext& context, const xmlDoc& document) {
  const xmlNode* const root = xmlDocGetRootElement(&document);
  if (root == nullptr) return;
  for (const xmlNs* space = root->nsDef; space != nullptr; space = space->next) {
    if (space->prefix != nullptr) xmlXPathRegisterNs(&context, space->prefix, space->href);
  }
}

// The attribute of that name, in no namespace; null when there is none.
const xmlAttr* PlainAttribute(const xmlNode& element, std::string_view name) {
  const xmlAttr* attribute = element.properties;
  while (attribute != nullptr && (attribute->ns != nullptr || View(attribute->name) != name))
    attribute = attribute->next;
  return attribute;
}

}  // namespace

xmlNode* NextElement(xmlNode* current, const xmlNode* top) {
  if (xmlNode* const child = FirstElement(current == nullptr ? top->children : current->children))
    return child;
  while (current != nullptr && current != top) {
    if (xmlNode* const sibling = FirstElement(current->next)) return sibling;
    current = current->parent;
  }
  return nullptr;
}

std::vector<xmlNode*> SelectedNodes(xmlDoc& document, const std::string& xpath) {
  const Complaints complaints;
  // The library would stop at a NUL character.
  if (!IsXmlText(xpath)) complaints.Raise(kXPathFails, "it holds a character that XML does not allow");
  const ContextRef context(Made(xmlXPathNewContext(&document)));
  context->node = reinterpret_cast<xmlNode*>(&document);  // Where a relative path begins.
  DeclarePrefixes(*context, document);
  const ResultRef result(xmlXPathEvalExpression(Chars(xpath), context.get()));
  if (result == nullptr) complaints.Raise(kXPathFails, "it is wrong");
  if (result->type != XPATH_NODESET) complaints.Raise(kXPathFails, "it does not select nodes");
  if (result->nodesetval == nullptr) return {};

  xmlXPathNodeSetSort(result->nodesetval);
  std::vector<xmlNode*> nodes;
  nodes.reserve(static_cast<std::size_t>(result->nodesetval->nodeNr));
  for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
    xmlNode* const node = result->nodesetval->nodeTab[i];
    // A namespace is no node of the document: it goes with the result.
    if (node->type != XML_NAMESPACE_DECL) nodes.push_back(node);
  }
  return nodes;
}

const std::vector<xmlNode*>& AttributeIndex::Find(const xmlDoc& document, const AttributePattern& pattern) {
  static const std::vector<xmlNode*> kNone;
  constexpr std::size_t kMostIndexes = 16;  // No document needs more; nobody shall fill the memory with them.
  const std::string names = pattern.element + "@" + pattern.attribute;
  auto found = by_names_.find(names);
  if (found == by_names_.end()) {
    if (by_names_.size() == kMostIndexes) by_names_.clear();
    ByValue by_value;
    const auto* const top = reinterpret_cast<const xmlNode*>(&document);
    for (xmlNode* element = NextElement(nullptr, top); element != nullptr;
         element = NextElement(element, top)) {
      if (element->ns != nullptr || View(element->name) != pattern.element) continue;
      const xmlAttr* const attribute = PlainAttribute(*element, pattern.attribute);
      if (attribute == nullptr) continue;
      const TextRef value(xmlNodeGetContent(reinterpret_cast<const xmlNode*>(attribute)));
      by_value[std::string(View(value.get()))].push_back(element);
    }
    found = by_names_.emplace(names, std::move(by_value)).first;
  }
  const auto elements = found->second.find(pattern.value);
  return elements == found->second.end() ? kNone : elements->second;
}

}  // namespace talvex::adapters::libxml2
