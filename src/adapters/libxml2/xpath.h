// Selecting nodes.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "adapters/libxml2/attribute_pattern.h"
#include "adapters/libxml2/ownership.h"

namespace talvex::adapters::libxml2 {

// The element that follows in document order, inside `top` (its ancestor or itself); null behind the last
// one. Null for `current` gives the first element inside `top`, which is not `top` itself.
[[nodiscard]] xmlNode* NextElement(xmlNode* current, const xmlNode* top);

// The nodes that an expression selects from the document, in document order, namespaces left out; raises
// -2147467259 for an expression that is wrong or gives something else than nodes.
[[nodiscard]] std::vector<xmlNode*> SelectedNodes(xmlDoc& document, const std::string& xpath);

// The elements of a document by the value of one attribute, so that a question for one value does not walk
// the document. Each pair of element and attribute name is indexed when it is first asked for.
class AttributeIndex {
 public:
  // In document order.
  [[nodiscard]] const std::vector<xmlNode*>& Find(const xmlDoc& document, const AttributePattern& pattern);
  // To be called when the document changes.
  void Drop() noexcept { by_names_.clear(); }

 private:
  using ByValue = std::unordered_map<std::string, std::vector<xmlNode*>>;

  std::unordered_map<std::string, ByValue> by_names_;
};

}  // namespace talvex::adapters::libxml2
