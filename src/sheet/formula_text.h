// Formula texts between the grammar of workbooks and the library's own.
//
//                 in workbooks        in the library
//   text          "say ""hi"" \"      "say \"hi\" \\"
//   sheet         'it''s'!A1          'it\'s'!A1
//   sheets        'it''s:last'!A1     'it\'s':'last'!A1
// Texts in apostrophes and sheets in quotation marks, which the library takes as well, are none in workbooks.
#pragma once

#include <string>
#include <string_view>

namespace talvex::sheet {

// A formula as workbooks write it, for the library to read. Raises Refusal for a quote without an end, for a
// name in apostrophes that no "!" follows, and for a text that is used as a sheet's name; whatever else is
// wrong is left as it is, for the library to find.
[[nodiscard]] std::string ForLibrary(std::string_view formula);

// The way back. Sheets' names are in apostrophes where workbooks want them, whatever the library did.
[[nodiscard]] std::string FromLibrary(std::string_view formula);

}  // namespace talvex::sheet
