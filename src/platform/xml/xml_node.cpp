#include "platform/xml/xml_node.h"

namespace talvex::platform::xml {

std::string XmlNode::Name() const { return tree_->Name(handle_); }

std::string XmlNode::Text() const { return tree_->Text(handle_); }

std::string XmlNode::Xml() const { return tree_->Xml(handle_); }

std::string XmlNode::Attribute(const std::string& name) {
  return tree_->Attribute(handle_, name).value_or(std::string());
}

std::vector<XmlNodeRef> XmlNode::Attributes() const { return NodesOf(tree_, tree_->Attributes(handle_)); }

std::vector<XmlNodeRef> XmlNode::Children(std::string_view name) const {
  return NodesOf(tree_, tree_->Children(handle_, name));
}

void XmlNode::CheckIsIn(const Tree& tree) const {
  if (tree_.get() == &tree) return;
  throw automation::Error(automation::error_number::kInvalidCall, "Talvex.Platform.Xml",
                          "Invalid procedure call: the node '" + Name() + "' belongs to another document");
}

void XmlNode::Append(const XmlNode& child) {
  child.CheckIsIn(*tree_);
  tree_->Append(handle_, child.handle_);
}

XmlNodeRef XmlNode::SetAttribute(const std::string& name, const std::string& value) {
  return std::make_shared<XmlNode>(tree_, tree_->SetAttribute(handle_, name, value));
}

void XmlNode::SetText(std::string_view text) { tree_->SetText(handle_, text); }

void XmlNode::Remove() { tree_->Remove(handle_); }

std::int32_t XmlNodeList::Count() const { return static_cast<std::int32_t>(nodes_.size()); }

XmlNodeRef XmlNodeList::Item(std::int32_t index) {
  return index < 0 || index >= Count() ? nullptr : nodes_[static_cast<std::size_t>(index)];
}

std::vector<XmlNodeRef> NodesOf(const std::shared_ptr<Tree>& tree, const std::vector<NodeHandle>& handles) {
  std::vector<XmlNodeRef> nodes;
  nodes.reserve(handles.size());
  for (NodeHandle handle : handles) nodes.push_back(std::make_shared<XmlNode>(tree, handle));
  return nodes;
}

}  // namespace talvex::platform::xml
