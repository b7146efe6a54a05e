#include <algorithm>

#include "adapters/libxml2/libxml_tree.h"
#include "adapters/libxml2/names.h"

namespace talvex::adapters::libxml2 {

namespace {

using platform::xml::NodeHandle;

// How many elements may stand one inside the other: as many as can be read again.
constexpr int kDeepest = 257;

xmlNode& ElementOf(NodeHandle handle) {
  auto* const node = reinterpret_cast<xmlNode*>(handle);
  if (node->type != XML_ELEMENT_NODE) RaiseInvalid("an element is wanted");
  return *node;
}
NodeHandle HandleOf(void* node) { return static_cast<NodeHandle>(node); }

// The element and those above it.
int DepthOf(const xmlNode* node) {
  int depth = 0;
  for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) ++depth;
  return depth;
}

// The elements on the longest way from an element down, itself included.
int HeightOf(xmlNode& top) {
  const int above = DepthOf(&top) - 1;
  int deepest = above + 1;
  for (xmlNode* element = NextElement(&top, &top); element != nullptr; element = NextElement(element, &top))
    deepest = std::max(deepest, DepthOf(element));
  return deepest - above;
}

void CheckPlace(const xmlNode& parent, xmlNode& child) {
  for (const xmlNode* above = &parent; above != nullptr; above = above->parent) {
    if (above == &child) RaiseInvalid("an element cannot be put into itself");
  }
  if (DepthOf(&parent) + HeightOf(child) > kDeepest) {
    RaiseInvalid("more than " + std::to_string(kDeepest) + " elements stand one inside the other");
  }
}

void CheckPrefix(const std::string& prefix) {
  if (prefix == "xml" || prefix == "xmlns") RaiseInvalid("the prefix '" + prefix + "' is XML's own");
}

}  // namespace

NodeHandle LibxmlTree::CreateElement(const std::string& name, const std::string& name_space) {
  const SplitName split = CheckedName(name);
  CheckText(name_space);
  CheckPrefix(split.prefix);
  if (name_space.empty() && !split.prefix.empty()) {
    RaiseInvalid("the prefix '" + split.prefix + "' needs a namespace");
  }
  NodeCopy element(Made(xmlNewDocNode(document_.get(), nullptr, Chars(split.local), nullptr)));
  if (!name_space.empty()) {
    const xmlChar* const prefix = split.prefix.empty() ? nullptr : Chars(split.prefix);
    xmlSetNs(element.get(), Made(xmlNewNs(element.get(), Chars(name_space), prefix)));
  }
  loose_.insert(element.get());
  return HandleOf(element.release());
}

void LibxmlTree::Append(NodeHandle parent, NodeHandle child) {
  xmlNode& added = ElementOf(child);
  auto* const place =
      parent == nullptr ? reinterpret_cast<xmlNode*>(document_.get()) : reinterpret_cast<xmlNode*>(parent);
  const bool to_document = place->type == XML_DOCUMENT_NODE;
  if (!to_document) CheckPlace(ElementOf(HandleOf(place)), added);
  const xmlNode* const root = xmlDocGetRootElement(document_.get());
  if (to_document && root != nullptr && root != &added) RaiseInvalid("the document has a root already");

  index_.Drop();
  TakeOut(added);
  xmlAddChild(place, &added);
  loose_.erase(&added);
  // Its namespaces may have been declared where it was.
  xmlReconciliateNs(document_.get(), &added);
  const xmlNs* const inherited = to_document ? nullptr : xmlSearchNs(document_.get(), place, nullptr);
  // Or else it would be read as an element of the namespace around it.
  if (added.ns == nullptr && inherited != nullptr && !View(inherited->href).empty()) {
    xmlNewNs(&added, reinterpret_cast<const xmlChar*>(""), nullptr);
  }
}

NodeHandle LibxmlTree::SetAttribute(NodeHandle element, const std::string& name, const std::string& value) {
  xmlNode& target = ElementOf(element);
  const SplitName split = CheckedName(name);
  CheckText(value);
  if (name == "xmlns") RaiseInvalid("the default namespace of an element cannot be set");
  if (split.prefix == "xmlns") return DeclarePrefix(target, split.local, value);
  xmlNs* space = nullptr;
  if (!split.prefix.empty()) {
    space = xmlSearchNs(document_.get(), &target, Chars(split.prefix));
    if (space == nullptr) RaiseInvalid("the prefix '" + split.prefix + "' is not declared");
  }
  index_.Drop();
  return HandleOf(Made(xmlSetNsProp(&target, space, Chars(split.local), Chars(value))));
}

// To the library a declaration is no attribute. What the caller gets is one that stands for it.
NodeHandle LibxmlTree::DeclarePrefix(xmlNode& element, const std::string& prefix,
                                     const std::string& name_space) {
  CheckPrefix(prefix);
  if (name_space.empty()) RaiseInvalid("the prefix '" + prefix + "' needs a namespace");
  const xmlNs* const declared = xmlSearchNs(document_.get(), &element, Chars(prefix));
  if (declared != nullptr && View(declared->href) != name_space) {
    RaiseInvalid("the prefix '" + prefix + "' is declared already");
  }
  if (declared == nullptr) Made(xmlNewNs(&element, Chars(name_space), Chars(prefix)));
  index_.Drop();
  xmlAttr* const attribute = Made(xmlNewDocProp(document_.get(), Chars("xmlns:" + prefix), nullptr));
  loose_.insert(reinterpret_cast<xmlNode*>(attribute));
  xmlAddChild(reinterpret_cast<xmlNode*>(attribute), Made(xmlNewDocText(document_.get(), Chars(name_space))));
  return HandleOf(attribute);
}

void LibxmlTree::SetText(NodeHandle element, std::string_view text) {
  xmlNode& target = ElementOf(element);
  CheckText(text);
  index_.Drop();
  while (target.children != nullptr) TakeOut(*target.children);
  const auto* const chars = reinterpret_cast<const xmlChar*>(text.data());
  xmlAddChild(&target, Made(xmlNewDocTextLen(document_.get(), chars, static_cast<int>(text.size()))));
}

void LibxmlTree::Remove(NodeHandle node) {
  auto* const removed = reinterpret_cast<xmlNode*>(node);
  if (removed->type == XML_DOCUMENT_NODE) RaiseInvalid("a document cannot be taken out of anything");
  index_.Drop();
  TakeOut(*removed);
}

void LibxmlTree::TakeOut(xmlNode& node) {
  if (node.parent == nullptr) return;
  loose_.insert(&node);
  xmlUnlinkNode(&node);
}

}  // namespace talvex::adapters::libxml2
