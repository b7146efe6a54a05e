#include "platform/xml/xml_document.h"

#include <utility>

#include "platform/environment.h"

namespace talvex::platform::xml {

namespace {

const Engine& CurrentEngine() {
  const std::shared_ptr<const Engine>& engine = Environment::Current().xml;
  if (engine != nullptr) return *engine;
  throw automation::Error(automation::error_number::kObjectNotSet, "Talvex.Platform.Xml",
                          "Object not set: no XML engine");
}

}  // namespace

std::int32_t XmlParseError::ErrorCode() const { return error_.code; }

std::string XmlParseError::Reason() const { return error_.reason; }

std::int32_t XmlParseError::Line() const { return error_.line; }

XmlDocument::XmlDocument() : tree_(CurrentEngine().NewTree()) {}

bool XmlDocument::Take(Parsed parsed) {
  tree_ = std::move(parsed.tree);
  error_ = std::move(parsed.error);
  return error_.code == 0;
}

bool XmlDocument::LoadXml(const std::string& text) { return Take(CurrentEngine().ParseText(text)); }

bool XmlDocument::Load(const std::string& path) { return Take(CurrentEngine().ParseFile(path)); }

std::string XmlDocument::Xml() const { return tree_->Xml(); }

std::shared_ptr<XmlParseError> XmlDocument::ParseErrorObject() const {
  return std::make_shared<XmlParseError>(error_);
}

XmlNodeRef XmlDocument::DocumentElement() const {
  NodeHandle root = tree_->Root();
  return root == nullptr ? nullptr : std::make_shared<XmlNode>(tree_, root);
}

XmlNodeRef XmlDocument::SelectSingleNode(const std::string& xpath) {
  const std::vector<NodeHandle> found = tree_->Select(xpath);
  return found.empty() ? nullptr : std::make_shared<XmlNode>(tree_, found.front());
}

std::shared_ptr<XmlNodeList> XmlDocument::SelectNodes(const std::string& xpath) {
  return std::make_shared<XmlNodeList>(NodesOf(tree_, tree_->Select(xpath)));
}

std::string XmlDocument::TextOfOnly(std::string_view name) const {
  if (error_.code != 0) return {};
  const std::vector<NodeHandle> elements = tree_->Elements(name);
  return elements.size() == 1 ? tree_->Text(elements.front()) : std::string();
}

XmlNodeRef XmlDocument::CreateElement(const std::string& name, const std::string& name_space) {
  return std::make_shared<XmlNode>(tree_, tree_->CreateElement(name, name_space));
}

void XmlDocument::SetRoot(const XmlNode& element) {
  CheckOwns(element);
  tree_->Append(nullptr, element.handle_);
}

std::string XmlDocument::TransformedBy(const XmlDocument& stylesheet) const {
  return CurrentEngine().Transform(*tree_, *stylesheet.tree_);
}

void XmlDocument::Save(const std::string& path) const {
  Environment::Current().files->WriteNew(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + Xml() + "\n");
}

}  // namespace talvex::platform::xml
