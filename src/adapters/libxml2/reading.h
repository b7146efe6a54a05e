// Reading texts and files into trees of the library.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "adapters/libxml2/ownership.h"
#include "platform/xml/tree.h"

namespace talvex::adapters::libxml2 {

// How the bytes of a document say which characters they mean.
enum class Encoding {
  Utf8,      // They are UTF-8, whatever a declaration claims.
  Declared,  // As the declaration or a byte order mark says; UTF-8 without either.
};

// A document, or why there is none.
using Read = std::variant<DocumentRef, platform::xml::ParseError>;

[[nodiscard]] Read ReadDocument(std::string_view bytes, Encoding encoding);

// The bytes of a file; a parse error when it cannot be read. `what` names the file in the reason.
[[nodiscard]] std::variant<std::string, platform::xml::ParseError> ReadFile(const std::string& path,
                                                                            std::string_view what);

}  // namespace talvex::adapters::libxml2
