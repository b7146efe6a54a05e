#include "adapters/libxml2/xml_engine.h"

#include <mutex>
#include <utility>

#include "adapters/libxml2/complaints.h"
#include "adapters/libxml2/libxml_tree.h"
#include "adapters/libxml2/reading.h"
#include "adapters/libxml2/schema.h"
#include "adapters/libxml2/stylesheet.h"
#include "platform/files.h"

namespace talvex::adapters::libxml2 {

namespace {

using platform::xml::Parsed;
using platform::xml::ParseError;
using platform::xml::Tree;

DocumentRef NewDocument() {
  return DocumentRef(Made(xmlNewDoc(reinterpret_cast<const xmlChar*>(XML_DEFAULT_VERSION))));
}

Parsed Failed(ParseError error) { return {std::make_shared<LibxmlTree>(NewDocument()), std::move(error)}; }

Parsed Parse(std::string_view bytes, Encoding encoding, const std::string& folder) {
  Read read = ReadDocument(bytes, encoding);
  if (auto* error = std::get_if<ParseError>(&read)) return Failed(std::move(*error));
  auto& document = std::get<DocumentRef>(read);
  if (ParseError error = Validated(*document, folder); error.code != 0) return Failed(std::move(error));
  return {std::make_shared<LibxmlTree>(std::move(document)), {}};
}

// The part of a path before the file's name, with the separator behind it.
std::string FolderOf(const std::string& path) {
  const std::string system_path = platform::SystemPath(path);
  const std::size_t slash = system_path.rfind('/');
  return slash == std::string::npos ? std::string() : system_path.substr(0, slash + 1);
}

// All trees that an engine is given are its own.
const xmlDoc& DocumentOf(const Tree& tree) { return static_cast<const LibxmlTree&>(tree).Document(); }

}  // namespace

XmlEngine::XmlEngine() {
  static std::once_flag once;
  std::call_once(once, [] {
    xmlInitParser();
    Complaints::Install();
    PrepareStylesheets();
  });
}

std::shared_ptr<Tree> XmlEngine::NewTree() const { return std::make_shared<LibxmlTree>(NewDocument()); }

Parsed XmlEngine::ParseText(std::string_view text) const { return Parse(text, Encoding::Utf8, {}); }

Parsed XmlEngine::ParseFile(const std::string& path) const {
  auto bytes = ReadFile(path, "The document");
  if (auto* error = std::get_if<ParseError>(&bytes)) return Failed(std::move(*error));
  return Parse(std::get<std::string>(bytes), Encoding::Declared, FolderOf(path));
}

std::string XmlEngine::Transform(const Tree& document, const Tree& stylesheet) const {
  return Transformed(DocumentOf(document), DocumentOf(stylesheet));
}

}  // namespace talvex::adapters::libxml2
