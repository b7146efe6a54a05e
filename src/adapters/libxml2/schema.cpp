#include "adapters/libxml2/schema.h"

#include <libxml/xmlerror.h>
#include <libxml/xmlschemas.h>

#include <utility>

#include "adapters/libxml2/complaints.h"
#include "adapters/libxml2/reading.h"
#include "automation/text.h"
#include "platform/files.h"

namespace talvex::adapters::libxml2 {

namespace {

using platform::xml::ParseError;

using SchemaRef = std::unique_ptr<xmlSchema, FreeWith<xmlSchemaFree>>;
using SchemaParserRef = std::unique_ptr<xmlSchemaParserCtxt, FreeWith<xmlSchemaFreeParserCtxt>>;
using ValidatorRef = std::unique_ptr<xmlSchemaValidCtxt, FreeWith<xmlSchemaFreeValidCtxt>>;

constexpr const char* kInstanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";
constexpr std::string_view kSchemaNamespace = "http://www.w3.org/2001/XMLSchema";

// The schema's location as the document states it; empty when it states none.
std::string LocationIn(const xmlDoc& document) {
  const xmlNode* const root = xmlDocGetRootElement(&document);
  if (root == nullptr) return {};
  const TextRef location(xmlGetNsProp(root, reinterpret_cast<const xmlChar*>("noNamespaceSchemaLocation"),
                                      reinterpret_cast<const xmlChar*>(kInstanceNamespace)));
  return std::string(View(location.get()));
}

std::string PathOf(const std::string& location, const std::string& folder) {
  std::string path = platform::SystemPath(automation::Trimmed(location));
  return path.starts_with('/') ? path : folder + path;
}

// Whether the schema has other files as its parts. The library would pass over some it cannot read.
bool NamesOthers(const xmlDoc& schema) {
  const xmlNode* const root = xmlDocGetRootElement(&schema);
  for (const xmlNode* part = root->children; part != nullptr; part = part->next) {
    if (part->type != XML_ELEMENT_NODE || part->ns == nullptr || View(part->ns->href) != kSchemaNamespace)
      continue;
    const std::string_view name = View(part->name);
    if (name == "include" || name == "import" || name == "redefine") return true;
  }
  return false;
}

ParseError Blaming(const std::string& location, const std::string& reason) {
  return {XML_SCHEMAP_FAILED_LOAD, "The schema " + location + " cannot be used: " + reason, 0};
}

// What makes the schema unusable, or else what is wrong with the document by it; code 0 when nothing is.
ParseError ValidatedAgainst(xmlDoc& schema_source, xmlDoc& document, const std::string& location) {
  const Complaints complaints;
  const SchemaParserRef parser(Made(xmlSchemaNewDocParserCtxt(&schema_source)));
  const SchemaRef schema(xmlSchemaParse(parser.get()));
  if (schema == nullptr || complaints.First().code != 0) return Blaming(location, complaints.First().reason);
  const ValidatorRef validator(Made(xmlSchemaNewValidCtxt(schema.get())));
  const int outcome = xmlSchemaValidateDoc(validator.get(), &document);
  if (outcome == 0 || complaints.First().code != 0) return complaints.First();
  return Blaming(location, "validation ended with " + std::to_string(outcome));
}

}  // namespace

ParseError Validated(xmlDoc& document, const std::string& folder) {
  const std::string location = LocationIn(document);
  if (automation::Trimmed(location).empty()) return {};
  if (location.find("://") != std::string::npos) return Blaming(location, "it is not the path of a file");

  auto bytes = ReadFile(PathOf(location, folder), "The schema");
  if (const auto* error = std::get_if<ParseError>(&bytes)) return *error;
  const Read schema = ReadDocument(std::get<std::string>(bytes), Encoding::Declared);
  if (const auto* error = std::get_if<ParseError>(&schema)) return Blaming(location, error->reason);

  xmlDoc& source = *std::get<DocumentRef>(schema);
  if (NamesOthers(source)) return Blaming(location, "it includes or imports another schema");
  return ValidatedAgainst(source, document, location);
}

}  // namespace talvex::adapters::libxml2
