// Transforming documents with stylesheets.
#pragma once

#include <string>

#include "adapters/libxml2/ownership.h"

namespace talvex::adapters::libxml2 {

// Prepares libxslt; once per process.
void PrepareStylesheets();

// What the stylesheet makes of the document, as UTF-8 text; a declaration in it says UTF-8. A stylesheet is
// one document by itself: it may not include or import another, nor read one with document(), nor write one.
// A stylesheet that does, that is wrong, that fails or that ends itself with a message raises -2147467259.
[[nodiscard]] std::string Transformed(const xmlDoc& document, const xmlDoc& stylesheet);

}  // namespace talvex::adapters::libxml2
