#include "platform/database/sql_script.h"

#include <cstddef>

#include "platform/database/sql_text.h"

namespace talvex::platform::database {

std::vector<std::string_view> StatementsOf(std::string_view script) {
  std::vector<std::string_view> statements;
  SqlTokenizer tokens(script);
  const char* start = nullptr;  // Of the statement that is being read.
  bool in_body = false;
  for (;;) {
    const SqlToken token = tokens.NextMeaning();
    const bool ends = token.kind == SqlTokenKind::End || (token.kind == SqlTokenKind::Semicolon && !in_body);
    if (token.text == "$$") in_body = !in_body;
    if (!ends) {
      if (start == nullptr) start = token.text.data();
      continue;
    }
    if (start != nullptr) statements.emplace_back(start, static_cast<std::size_t>(token.text.data() - start));
    if (token.kind == SqlTokenKind::End) return statements;
    start = nullptr;
  }
}

}  // namespace talvex::platform::database
