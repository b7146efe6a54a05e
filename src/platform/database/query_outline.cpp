#include "platform/database/query_outline.h"

#include <algorithm>
#include <array>
#include <span>

#include "automation/text.h"
#include "platform/database/fault.h"
#include "platform/database/sql_text.h"

namespace talvex::platform::database {

namespace {

bool IsAnyOf(const SqlToken& token, std::span<const std::string_view> words) {
  return token.kind == SqlTokenKind::Word &&
         std::any_of(words.begin(), words.end(),
                     [&](std::string_view word) { return automation::SameFolded(token.text, word); });
}

bool IsWord(const SqlToken& token, std::string_view word) { return IsAnyOf(token, {&word, 1}); }

// The tokens of a query that stand outside all parentheses, each whole parenthesis left out.
class OuterTokens {
 public:
  explicit OuterTokens(std::string_view query) : tokens_(query) {}

  [[nodiscard]] SqlToken Next() {
    for (;;) {
      const SqlToken token = tokens_.NextMeaning();
      if (token.kind == SqlTokenKind::End) return token;
      if (token.text == "(") ++depth_;
      if (depth_ == 0) return token;
      if (token.text == ")") --depth_;
    }
  }

 private:
  SqlTokenizer tokens_;
  std::size_t depth_ = 0;
};

class OutlineReader {
 public:
  explicit OutlineReader(std::string_view query) : tokens_(query) {}

  [[nodiscard]] QueryOutline Read() {
    if (!IsWord(tokens_.Next(), "SELECT")) return {};
    for (SqlToken token = tokens_.Next(); token.kind != SqlTokenKind::End; token = tokens_.Next())
      Take(token);
    if (!rows_of_table_) outline_.table.reset();
    return outline_;
  }

 private:
  void Take(const SqlToken& token) {
    static constexpr std::array<std::string_view, 6> kMakesNewRows = {"DISTINCT", "GROUP",     "HAVING",
                                                                      "UNION",    "INTERSECT", "EXCEPT"};
    static constexpr std::array<std::string_view, 5> kAggregates = {"COUNT", "MAX", "MIN", "SUM", "AVG"};
    if (IsAnyOf(token, kMakesNewRows)) rows_of_table_ = false;
    if (IsWord(token, "ORDER")) outline_.ordered = true;
    if (!in_select_list_) return;
    if (IsAnyOf(token, kAggregates)) outline_.aggregates = true;
    if (IsWord(token, "FROM")) TakeTable();
  }

  void TakeTable() {
    static constexpr std::array<std::string_view, 2> kMayFollow = {"WHERE", "ORDER"};
    in_select_list_ = false;
    const SqlToken name = tokens_.Next();
    const bool is_name = name.kind == SqlTokenKind::Word || name.kind == SqlTokenKind::Name;
    const SqlToken after = tokens_.Next();
    const bool ends = after.kind == SqlTokenKind::End || after.kind == SqlTokenKind::Semicolon;
    if (is_name && (ends || IsAnyOf(after, kMayFollow))) outline_.table = SqlNameText(name);
    Take(after);
  }

  OuterTokens tokens_;
  QueryOutline outline_;
  bool in_select_list_ = true;
  bool rows_of_table_ = true;
};

}  // namespace

QueryOutline OutlineOf(std::string_view query) {
  try {
    return OutlineReader(query).Read();
  } catch (const Fault&) {
    return {};  // Whoever runs the text learns what is wrong with it.
  }
}

std::optional<std::string> TableOfQuery(std::string_view query) { return OutlineOf(query).table; }

}  // namespace talvex::platform::database
