#include "adapters/odbc/dialect.h"

#include <algorithm>
#include <array>

#include "automation/text.h"
#include "platform/database/query_outline.h"

namespace talvex::adapters::odbc {

namespace {

using automation::SameFolded;
using platform::database::SqlToken;
using platform::database::SqlTokenizer;
using platform::database::SqlTokenKind;
using platform::database::TableColumn;

constexpr std::string_view kSqlServerTable =
    "SELECT t.name, c.name, "
    "CASE WHEN EXISTS (SELECT 1 FROM sys.index_columns k WHERE k.object_id = c.object_id "
    "AND k.column_id = c.column_id AND k.is_included_column = 0 AND k.index_id = "
    "(SELECT TOP 1 i.index_id FROM sys.indexes i WHERE i.object_id = t.object_id AND i.is_unique = 1 "
    "AND i.has_filter = 0 ORDER BY i.is_primary_key DESC, i.index_id)) THEN 1 ELSE 0 END, "
    "CASE WHEN c.is_identity = 1 OR EXISTS (SELECT 1 FROM sys.default_constraints d "
    "WHERE d.object_id = c.default_object_id AND d.definition LIKE '%NEXT VALUE FOR%') "
    "THEN 1 ELSE 0 END, CASE WHEN c.is_nullable = 1 THEN 1 ELSE 0 END "
    "FROM sys.tables t, sys.columns c "
    "WHERE c.object_id = t.object_id AND t.object_id = OBJECT_ID(?) ORDER BY c.column_id";

constexpr std::string_view kPostgreSqlTable =
    "SELECT t.relname, c.attname, "
    "CASE WHEN c.attnum = ANY (k.indkey) THEN 1 ELSE 0 END, "
    "CASE WHEN c.attidentity <> '' OR pg_get_expr(d.adbin, d.adrelid) LIKE 'nextval(%' THEN 1 ELSE 0 END, "
    "CASE WHEN c.attnotnull THEN 0 ELSE 1 END "
    "FROM pg_class t "
    "JOIN pg_attribute c ON c.attrelid = t.oid AND c.attnum > 0 AND NOT c.attisdropped "
    "LEFT JOIN pg_attrdef d ON d.adrelid = c.attrelid AND d.adnum = c.attnum "
    "LEFT JOIN LATERAL (SELECT indkey FROM pg_index WHERE indrelid = t.oid AND indisunique "
    "AND indpred IS NULL AND indexprs IS NULL ORDER BY indisprimary DESC, indexrelid LIMIT 1) k ON true "
    "WHERE t.oid = to_regclass(quote_ident(lower(?))) AND t.relkind IN ('r', 'p') ORDER BY c.attnum";

std::string Quoted(std::string_view name) {
  return '"' + automation::Replaced(automation::Folded(name), "\"", "\"\"") + '"';
}

// What makes the order of a table's rows the same every time: its key, else the place where they are kept.
std::string KeyOrder(const KnownTable& table) {
  std::string order;
  for (const TableColumn& column : table.info.columns) {
    if (!column.key) continue;
    order += (order.empty() ? "" : ", ") + Quoted(column.name);
    if (table.IsNullable(column.name)) order += " NULLS FIRST";
  }
  return order.empty() ? "ctid" : order;
}

// Copies a query and says, behind every column that it is ordered by, where Null goes. An index serves an
// order only as it is kept, so nothing is said of columns that are never Null.
class NullPlacer {
 public:
  NullPlacer(std::string_view query, const KnownTable* table) : query_(query), table_(table) {}

  [[nodiscard]] std::string Text() {
    SqlTokenizer tokens(query_);
    SqlToken token = tokens.NextMeaning();
    for (; token.kind != SqlTokenKind::End; token = tokens.NextMeaning()) Take(token);
    EndTerm(token);
    text_.append(query_.substr(copied_));
    return text_;
  }

 private:
  void Take(const SqlToken& token) {
    if (token.text == "(") ++depth_;
    if (token.text == ")") --depth_;
    if (depth_ > 0) return;
    const bool is_word = token.kind == SqlTokenKind::Word;
    if (is_word && SameFolded(token.text, "order")) {
      in_order_ = true;
    } else if (in_order_ && token.text == ",") {
      EndTerm(token);
    } else if (in_order_ && is_word && SameFolded(token.text, "desc")) {
      descending_ = true;
    } else if (in_order_ && column_.empty() && !SameFolded(token.text, "by")) {
      column_ = platform::database::SqlNameText(token);
    }
  }

  // `next` is the token behind the term.
  void EndTerm(const SqlToken& next) {
    if (!column_.empty() && (table_ == nullptr || table_->IsNullable(column_))) {
      const auto end = static_cast<std::size_t>(next.text.data() - query_.data());
      text_.append(automation::Trimmed(query_.substr(copied_, end - copied_)));
      text_ += descending_ ? " NULLS LAST" : " NULLS FIRST";
      copied_ = end;
    }
    column_.clear();
    descending_ = false;
  }

  std::string_view query_;
  const KnownTable* table_;
  std::string text_;
  std::size_t copied_ = 0;
  int depth_ = 0;
  bool in_order_ = false;
  bool descending_ = false;
  std::string column_;  // The first word of the term that is being read.
};

// Where the rows of an INSERT begin: what it returns stands before them. The end for a text without rows.
std::size_t PlaceOfRows(std::string_view insert) {
  constexpr std::array<std::string_view, 4> kBegin = {"VALUES", "DEFAULT", "SELECT", "EXEC"};
  SqlTokenizer tokens(insert);
  int depth = 0;
  for (SqlToken token = tokens.NextMeaning(); token.kind != SqlTokenKind::End; token = tokens.NextMeaning()) {
    if (token.text == "(") ++depth;
    if (token.text == ")") --depth;
    if (depth > 0 || token.kind != SqlTokenKind::Word) continue;
    const bool begins = std::any_of(kBegin.begin(), kBegin.end(),
                                    [&](std::string_view word) { return SameFolded(token.text, word); });
    if (begins) return static_cast<std::size_t>(token.text.data() - insert.data());
  }
  return insert.size();
}

}  // namespace

Server ServerOf(std::string_view product_name) {
  return product_name == "PostgreSQL" ? Server::PostgreSql : Server::SqlServer;
}

platform::database::SqlDialect DialectOf(Server server) noexcept {
  if (server == Server::SqlServer) return {};
  return {.delete_takes_from = true, .lacks_national_text = true, .folds_plain_names = true};
}

std::string_view TableQuery(Server server) noexcept {
  return server == Server::SqlServer ? kSqlServerTable : kPostgreSqlTable;
}

std::string SpelledName(Server server, std::string_view name) {
  const bool plain = std::none_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
  return server == Server::PostgreSql && plain ? automation::Raised(name) : std::string(name);
}

bool KnownTable::IsNullable(std::string_view column) const {
  return std::any_of(nullable.begin(), nullable.end(),
                     [&](const std::string& name) { return SameFolded(name, column); });
}

std::string OrderedQuery(std::string_view query, const KnownTable* table, std::size_t most_rows) {
  const auto outline = platform::database::OutlineOf(query);
  std::string text = outline.ordered ? NullPlacer(query, table).Text() : std::string(query);
  if (table == nullptr || outline.aggregates) return text;
  text += (outline.ordered ? ", " : " ORDER BY ") + KeyOrder(*table);
  // One more than wanted, to know whether there is more.
  if (most_rows != platform::database::kAllRows) text += " LIMIT " + std::to_string(most_rows + 1);
  return text;
}

std::string ReturningInsert(Server server, std::string_view insert, std::string_view column) {
  if (server == Server::PostgreSql) return std::string(insert) + " RETURNING " + Quoted(column);
  const std::size_t rows = PlaceOfRows(insert);
  if (rows == insert.size()) return std::string(insert);
  std::string text(insert.substr(0, rows));
  return text.append("OUTPUT INSERTED.").append(column).append(" ").append(insert.substr(rows));
}

}  // namespace talvex::adapters::odbc
