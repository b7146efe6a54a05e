// Values as scenarios write them and as failure messages show them.
#pragma once

#include <string>
#include <vector>

#include "automation/variant.h"

namespace talvex::test {

// null, empty, nan, infinity; numbers, dates; "texts in quotes" with \" \\ \r \n; [arrays, of, values];
// {"key": value, ...} for a collection and dictionary{"key": value, ...} for a dictionary;
// Talvex.LedgerAccount{"Property": value, ...} for a new object of that class; xml"<a/>" for a document and
// node"<a/>" for its root; any other word is itself. Raises std::runtime_error for what is none of these.
[[nodiscard]] std::vector<automation::Variant> ReadValues(const std::string& text);

// The same spelling back, except that texts and the names of entries stand without quotes, an empty text as
// "", line ends as \r and \n, and an object that has more than properties as <Object>.
[[nodiscard]] std::string Shown(const automation::Variant& value);

// The words of a line, separated by blanks; a run in quotes may contain some.
[[nodiscard]] std::vector<std::string> Words(const std::string& text);

}  // namespace talvex::test
