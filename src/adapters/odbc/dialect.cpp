#include "adapters/odbc/dialect.h"

#include <algorithm>
#include <array>
#include <utility>

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

// One term of the order that a query names.
struct OrderTerm {
  std::string column;  // The first word of the term.
  bool plain = true;   // There is nothing else in it but ASC or DESC.
  bool descending = false;
  std::size_t end = 0;  // Where the next term or clause begins.
};

class OrderReader {
 public:
  explicit OrderReader(std::string_view query) : query_(query) {}

  [[nodiscard]] std::vector<OrderTerm> Read() {
    SqlTokenizer tokens(query_);
    SqlToken token = tokens.NextMeaning();
    for (; token.kind != SqlTokenKind::End; token = tokens.NextMeaning()) Take(token);
    EndTerm(token);
    return std::move(terms_);
  }

 private:
  void Take(const SqlToken& token) {
    if (token.text == "(") ++depth_;
    if (token.text == ")") --depth_;
    const bool is_word = token.kind == SqlTokenKind::Word || token.kind == SqlTokenKind::Name;
    if (depth_ > 0 || token.text == ")") {
      term_.plain = false;
    } else if (is_word && SameFolded(token.text, "order")) {
      in_order_ = true;
    } else if (!in_order_ || SameFolded(token.text, "by") || SameFolded(token.text, "asc")) {
      return;
    } else if (token.text == ",") {
      EndTerm(token);
    } else if (SameFolded(token.text, "desc")) {
      term_.descending = true;
    } else if (term_.column.empty()) {
      term_.column = platform::database::SqlNameText(token);
      term_.plain = is_word;
    } else if (token.kind != SqlTokenKind::Semicolon) {
      term_.plain = false;
    }
  }

  // `next` is the token behind the term.
  void EndTerm(const SqlToken& next) {
    term_.end = static_cast<std::size_t>(next.text.data() - query_.data());
    if (!term_.column.empty()) terms_.push_back(std::move(term_));
    term_ = {};
  }

  std::string_view query_;
  std::vector<OrderTerm> terms_;
  OrderTerm term_;
  int depth_ = 0;
  bool in_order_ = false;
};

// The key, which makes the order of a table's rows the same every time, without the columns that the query is
// ordered by already; on PostgreSQL the place where rows are kept does for a table without one.
std::string KeyOrder(Server server, const KnownTable& table, const std::vector<OrderTerm>& terms) {
  std::string order;
  for (const TableColumn& column : table.info.columns) {
    const bool named = std::any_of(terms.begin(), terms.end(), [&](const OrderTerm& term) {
      return SameFolded(term.column, column.name);
    });
    if (!column.key || (named && server == Server::SqlServer)) continue;
    order += (order.empty() ? "" : ", ");
    if (server == Server::SqlServer) {
      order += column.name;
    } else {
      order += Quoted(column.name) + (table.IsNullable(column.name) ? " NULLS FIRST" : "");
    }
  }
  return order.empty() && server == Server::PostgreSql ? "ctid" : order;
}

// The query, with where Null goes said behind every column that it is ordered by. An index serves an order
// only as it is kept, so nothing is said of columns that are never Null.
std::string WithPlacesOfNull(std::string_view query, const KnownTable* table,
                             const std::vector<OrderTerm>& terms) {
  std::string text;
  std::size_t copied = 0;
  for (const OrderTerm& term : terms) {
    if (table != nullptr && !table->IsNullable(term.column)) continue;
    text.append(automation::Trimmed(query.substr(copied, term.end - copied)));
    text += term.descending ? " NULLS LAST" : " NULLS FIRST";
    copied = term.end;
  }
  return text.append(query.substr(copied));
}

// The text up to its last word, without what may end it: a semicolon, comments.
std::string_view WithoutEnd(std::string_view query) {
  SqlTokenizer tokens(query);
  std::size_t end = 0;
  for (SqlToken token = tokens.NextMeaning(); token.kind != SqlTokenKind::End; token = tokens.NextMeaning()) {
    if (token.kind == SqlTokenKind::Semicolon) continue;
    end = static_cast<std::size_t>(token.text.data() - query.data()) + token.text.size();
  }
  return query.substr(0, end);
}

// For SQL Server, where an order stands last in most queries.
std::string OrderedByKey(std::string_view query, const KnownTable& table,
                         const std::vector<OrderTerm>& terms) {
  const bool plain =
      std::all_of(terms.begin(), terms.end(), [](const OrderTerm& term) { return term.plain; });
  const std::string order = plain ? KeyOrder(Server::SqlServer, table, terms) : std::string();
  if (order.empty()) return std::string(query);
  return std::string(WithoutEnd(query)) + (terms.empty() ? " ORDER BY " : ", ") + order;
}

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

std::string OrderedQuery(Server server, std::string_view query, const KnownTable* table,
                         std::size_t most_rows) {
  const auto outline = platform::database::OutlineOf(query);
  const bool has_rows = table != nullptr && !outline.aggregates;
  const auto terms = outline.ordered ? OrderReader(query).Read() : std::vector<OrderTerm>();
  if (server == Server::SqlServer) return has_rows ? OrderedByKey(query, *table, terms) : std::string(query);
  std::string text = WithPlacesOfNull(query, table, terms);
  if (!has_rows) return text;
  text += (outline.ordered ? ", " : " ORDER BY ") + KeyOrder(server, *table, terms);
  // One more than wanted, to know whether there is more.
  if (most_rows != platform::database::kAllRows) text += " LIMIT " + std::to_string(most_rows + 1);
  return text;
}

std::string ReturningInsert(Server server, std::string_view insert, std::string_view column) {
  if (server == Server::PostgreSql) return std::string(insert) + " RETURNING " + Quoted(column);
  const std::size_t rows = PlaceOfRows(insert);
  if (rows == insert.size()) return std::string(insert);
  std::string text = "DECLARE @ASSIGNED TABLE (NUMBER BIGINT); ";
  text.append(insert.substr(0, rows)).append("OUTPUT INSERTED.").append(column).append(" INTO @ASSIGNED ");
  return text.append(WithoutEnd(insert.substr(rows))).append("; SELECT NUMBER FROM @ASSIGNED");
}

}  // namespace talvex::adapters::odbc
