#include "adapters/libxml2/reading.h"

#include <libxml/SAX2.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "adapters/libxml2/complaints.h"
#include "automation/error.h"
#include "platform/environment.h"

namespace talvex::adapters::libxml2 {

namespace {

using platform::xml::ParseError;

constexpr std::size_t kLargestDocument = 100'000'000;

void Refuse(void* parser, const std::string& reason) {
  Complaints::Note(XML_ERR_ENTITY_PROCESSING, xmlSAX2GetLineNumber(parser), reason + ", which is refused");
  xmlStopParser(static_cast<xmlParserCtxt*>(parser));
}

void OnDocumentType(void* parser, const xmlChar* name, const xmlChar* outside_id, const xmlChar* system_id) {
  if (outside_id != nullptr || system_id != nullptr)
    return Refuse(parser, "The document names an outside type");
  xmlSAX2InternalSubset(parser, name, outside_id, system_id);
}

void OnEntity(void* parser, const xmlChar* name, int /*type*/, const xmlChar* /*outside_id*/,
              const xmlChar* /*system_id*/, xmlChar* /*content*/) {
  Refuse(parser, "The document declares the entity " + std::string(View(name)));
}

// A default is put into every element of its kind, so that a short text could fill the memory.
void OnAttributeType(void* parser, const xmlChar* element, const xmlChar* name, int type, int kind,
                     const xmlChar* value, xmlEnumerationPtr values) {
  xmlSAX2AttributeDecl(parser, element, name, type, kind, value, values);
  if (value == nullptr) return;
  Refuse(parser, "The document declares a default for the attribute " + std::string(View(name)));
}

// What the library would take for the end of the text, behind the last element.
ParseError NulError(std::string_view bytes, std::size_t at) {
  const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  const auto line = static_cast<std::int32_t>(1 + std::count(bytes.begin(), end, '\n'));
  return {XML_ERR_INVALID_CHAR, "Line " + std::to_string(line) + ": A NUL character is not allowed", line};
}

}  // namespace

Read ReadDocument(std::string_view bytes, Encoding encoding) {
  if (bytes.size() > kLargestDocument) {
    return ParseError{XML_ERR_DOCUMENT_END,
                      "The document is larger than " + std::to_string(kLargestDocument) + " bytes", 0};
  }
  const bool is_utf8 = encoding == Encoding::Utf8;
  // In an encoding of wide characters, one of the first four bytes is a NUL.
  const std::size_t nul = bytes.find('\0');
  const bool is_wide = !is_utf8 && nul < 4;
  if (nul != std::string_view::npos && !is_wide) return NulError(bytes, nul);
  const Complaints complaints;
  const ParserRef parser(Made(xmlNewParserCtxt()));
  parser->sax->internalSubset = &OnDocumentType;
  parser->sax->entityDecl = &OnEntity;
  parser->sax->attributeDecl = &OnAttributeType;

  // Short texts are kept inside their nodes, which is less to allocate; the library knows them apart where it
  // changes or frees a node.
  const int options = XML_PARSE_NONET | XML_PARSE_COMPACT | (is_utf8 ? XML_PARSE_IGNORE_ENC : 0);
  // A null pointer would fail without an explanation.
  const char* const data = bytes.empty() ? "" : bytes.data();
  DocumentRef document(xmlCtxtReadMemory(parser.get(), data, static_cast<int>(bytes.size()), nullptr,
                                         is_utf8 ? "UTF-8" : nullptr, options));
  if (complaints.First().code != 0) return complaints.First();
  return DocumentRef(Made(document.release()));  // Memory is the one failure that goes unexplained.
}

std::variant<std::string, ParseError> ReadFile(const std::string& path, std::string_view what) {
  try {
    return platform::Environment::Current().files->Read(path);
  } catch (const automation::Error& error) {
    return ParseError{XML_IO_LOAD_ERROR, std::string(what) + " cannot be read: " + error.Description(), 0};
  }
}

}  // namespace talvex::adapters::libxml2
