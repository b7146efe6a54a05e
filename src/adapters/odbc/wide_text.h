// Texts as ODBC takes them in its wide form: UTF-16, which both drivers understand whatever the locale is.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace talvex::adapters::odbc {

using WideText = std::vector<SQLWCHAR>;

// The text in UTF-16, letters beyond the first plane as pairs. The text is well-formed UTF-8.
[[nodiscard]] WideText ToWide(std::string_view text);

// Adds the text in UTF-8. A half of a pair that stands alone becomes the replacement character.
void AppendNarrow(std::string& to, std::span<const SQLWCHAR> text);
[[nodiscard]] std::string ToNarrow(std::span<const SQLWCHAR> text);

}  // namespace talvex::adapters::odbc
