#include "platform/database/update_target.h"

#include <algorithm>
#include <array>
#include <span>

#include "automation/text.h"
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

std::optional<std::string> ReadTable(OuterTokens& tokens) {
  static constexpr std::array<std::string_view, 2> kMayFollow = {"WHERE", "ORDER"};
  const SqlToken name = tokens.Next();
  if (name.kind != SqlTokenKind::Word && name.kind != SqlTokenKind::Name) return std::nullopt;
  const SqlToken after = tokens.Next();
  const bool ends = after.kind == SqlTokenKind::End || after.kind == SqlTokenKind::Semicolon;
  return ends || IsAnyOf(after, kMayFollow) ? std::optional(SqlNameText(name)) : std::nullopt;
}

std::optional<std::string> TableOfReadableQuery(std::string_view query) {
  static constexpr std::array<std::string_view, 6> kMakesNewRows = {"DISTINCT", "GROUP",     "HAVING",
                                                                    "UNION",    "INTERSECT", "EXCEPT"};
  OuterTokens tokens(query);
  if (!IsWord(tokens.Next(), "SELECT")) return std::nullopt;
  std::optional<std::string> table;
  for (SqlToken token = tokens.Next(); token.kind != SqlTokenKind::End; token = tokens.Next()) {
    if (IsAnyOf(token, kMakesNewRows)) return std::nullopt;
    if (!table && IsWord(token, "FROM")) {
      table = ReadTable(tokens);
      if (!table) return std::nullopt;
    }
  }
  return table;
}

}  // namespace

std::optional<std::string> TableOfQuery(std::string_view query) {
  try {
    return TableOfReadableQuery(query);
  } catch (const Fault&) {
    return std::nullopt;  // Whoever runs the text learns what is wrong with it.
  }
}

UpdateTarget::UpdateTarget(const TableInfo& info, const std::vector<std::string>& columns)
    : table(info.name), belongs(columns.size()) {
  bool whole_key = true;
  for (const TableColumn& column : info.columns) {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const std::string& name) {
      return automation::SameFolded(name, column.name);
    });
    if (found == columns.end()) {
      whole_key = whole_key && !column.key;
      continue;
    }
    const auto position = static_cast<std::size_t>(found - columns.begin());
    belongs[position] = true;
    if (column.key) keys.push_back(position);
    if (column.assigned) assigned = position;
  }
  if (!whole_key) keys.clear();
}

}  // namespace talvex::platform::database
