// A document's nodes, kept by libxml2.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "adapters/libxml2/ownership.h"
#include "adapters/libxml2/xpath.h"
#include "platform/xml/tree.h"

namespace talvex::adapters::libxml2 {

class LibxmlTree final : public platform::xml::Tree {
 public:
  using NodeHandle = platform::xml::NodeHandle;

  explicit LibxmlTree(DocumentRef document) : document_(std::move(document)) {}
  ~LibxmlTree() override;
  LibxmlTree(const LibxmlTree&) = delete;
  LibxmlTree& operator=(const LibxmlTree&) = delete;

  [[nodiscard]] const xmlDoc& Document() const noexcept { return *document_; }

  [[nodiscard]] NodeHandle Root() const override;
  [[nodiscard]] std::vector<NodeHandle> Elements(std::string_view name) const override;
  [[nodiscard]] std::vector<NodeHandle> Select(const std::string& xpath) const override;
  [[nodiscard]] std::string Xml() const override;

  [[nodiscard]] std::string Name(NodeHandle node) const override;
  [[nodiscard]] std::string Text(NodeHandle node) const override;
  [[nodiscard]] std::string Xml(NodeHandle node) const override;
  [[nodiscard]] std::optional<std::string> Attribute(NodeHandle node, std::string_view name) const override;
  [[nodiscard]] std::vector<NodeHandle> Attributes(NodeHandle node) const override;
  [[nodiscard]] std::vector<NodeHandle> Children(NodeHandle node, std::string_view name) const override;

  NodeHandle CreateElement(const std::string& name, const std::string& name_space) override;
  void Append(NodeHandle parent, NodeHandle child) override;
  NodeHandle SetAttribute(NodeHandle element, const std::string& name, const std::string& value) override;
  void SetText(NodeHandle element, std::string_view text) override;
  void Remove(NodeHandle node) override;

 private:
  NodeHandle DeclarePrefix(xmlNode& element, const std::string& prefix, const std::string& name_space);
  void TakeOut(xmlNode& node);

  DocumentRef document_;
  // Nodes without a parent, which somebody may still hold and put back. They are the tree's to free.
  std::unordered_set<xmlNode*> loose_;
  mutable AttributeIndex index_;  // Built when asked for, dropped when anything changes.
};

}  // namespace talvex::adapters::libxml2
