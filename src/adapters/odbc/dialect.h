// Where the servers behind ODBC differ.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/database/driver.h"
#include "platform/database/sql_text.h"

namespace talvex::adapters::odbc {

enum class Server {
  SqlServer,   // Its own dialect; also for every server that is not known.
  PostgreSql,  // Set up by schema/postgresql.sql.
};

[[nodiscard]] Server ServerOf(std::string_view product_name);

// What the tokenizer must adapt for the server.
[[nodiscard]] platform::database::SqlDialect DialectOf(Server server) noexcept;

// A table as the catalogue knows it, and which of its columns may be Null.
struct KnownTable {
  platform::database::TableInfo info;
  std::vector<std::string> nullable;

  [[nodiscard]] bool IsNullable(std::string_view column) const;
};

// The query that describes one table, its name the one parameter: a row for every column, in order, with the
// table's name, the column's, and 1 or 0 for being part of the key, for being assigned by the database, and
// for taking Null. The key is the primary key, or else the unique constraint.
[[nodiscard]] std::string_view TableQuery(Server server) noexcept;

// A name as the component spells it. PostgreSQL keeps plain names in small letters.
[[nodiscard]] std::string SpelledName(Server server, std::string_view name);

// The query with an order that is the same every time. `table` is the one table that it reads, null for a
// query on several: on one table the key stands behind the order that the text names. For PostgreSQL a limit
// comes behind that, and Null is put first, last when the order is descending, as on SQL Server. SQL Server
// refuses a column that an order names twice, so there the key is added only where the text orders by plain
// columns or not at all.
[[nodiscard]] std::string OrderedQuery(Server server, std::string_view query, const KnownTable* table,
                                       std::size_t most_rows);

// The INSERT, made to return the value of the column that the database assigns. SQL Server returns none from
// a table that has triggers unless it is put into a table first.
[[nodiscard]] std::string ReturningInsert(Server server, std::string_view insert, std::string_view column);

}  // namespace talvex::adapters::odbc
