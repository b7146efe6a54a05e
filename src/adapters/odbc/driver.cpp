#include "adapters/odbc/driver.h"

#include <utility>

#include "platform/database/sql_script.h"

namespace talvex::adapters::odbc {

namespace {

using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::StatementsOf;

// What the texts of the component rely on is tried, since names of collations differ between servers: quoted
// texts are written without the prefix N, and codes are the same without case.
void RequireCollation(Connection& connection) {
  constexpr std::string_view kQuestion =
      "SELECT CASE WHEN 'a' = 'A' THEN 1 ELSE 0 END, CASE WHEN '\xD0\xB6\xE4\xBA\x88' = "
      "N'\xD0\xB6\xE4\xBA\x88' THEN 1 ELSE 0 END, DB_NAME(), "
      "CAST(DATABASEPROPERTYEX(DB_NAME(), 'Collation') AS NVARCHAR(128))";
  Statement statement(connection, Server::SqlServer, false);
  const auto rows = statement.RunText(kQuestion, platform::database::kAllRows).rows;
  const auto holds = [&](std::size_t column) { return rows.Value(0, column) == automation::Variant(1); };
  if (holds(0) && holds(1)) return;
  throw Fault(FaultKind::CannotOpen, 0, "55000",
              "The database " + std::string(rows.TextAt(0, 2)) + " has the collation " +
                  std::string(rows.TextAt(0, 3)) + ", which " +
                  (holds(0) ? "loses letters outside its code page" : "tells texts apart by case") +
                  ": use a database made with COLLATE Latin1_General_100_CI_AS_SC_UTF8");
}

void RunScript(Connection& connection, std::string_view script) {
  for (const std::string_view statement : StatementsOf(script)) connection.Run(statement);
}

bool HasRows(Connection& connection, Server server, const std::string& table) {
  Statement statement(connection, server, false);
  return statement.RunText("SELECT * FROM " + table, 1).rows.RowCount() > 0;
}

// The rules of the sample bring their numbers, which SQL Server takes only when told to.
void RunSample(Connection& connection, Server server, std::string_view sample) {
  const bool brings_numbers = server == Server::SqlServer && !sample.empty();
  if (brings_numbers) connection.Run("SET IDENTITY_INSERT ACCOUNTINGRULE ON");
  RunScript(connection, sample);
  if (brings_numbers) connection.Run("SET IDENTITY_INSERT ACCOUNTINGRULE OFF");
}

// The failure that comes before matters; closing the connection undoes what is left, too.
void UndoQuietly(ServerTransaction& transaction) noexcept {
  try {
    transaction.Rollback();
  } catch (...) {
    return;
  }
}

}  // namespace

OdbcDriver::OdbcDriver(std::optional<automation::Date> fixed_now)
    : environment_(std::make_shared<Environment>()),
      fixed_now_(fixed_now),
      counters_(std::make_shared<Counters>()) {}

std::unique_ptr<platform::database::Session> OdbcDriver::Open(const ConnectionString& connection_string) {
  return std::make_unique<OdbcSession>(environment_, connection_string, fixed_now_, counters_);
}

void SetUpDatabase(const ConnectionString& connection_string, const Scripts& scripts) {
  Connection connection(std::make_shared<Environment>(), connection_string);
  const Server server = ServerOf(connection.ProductName());
  ServerTransaction transaction(connection, server);
  transaction.StateSettings();
  if (server == Server::SqlServer) RequireCollation(connection);
  transaction.Begin();
  try {
    RunScript(connection, server == Server::PostgreSql ? scripts.postgresql : scripts.sql_server);
    if (!HasRows(connection, server, "I18NTEXT")) RunScript(connection, scripts.texts);
    if (!scripts.sample.empty() && HasRows(connection, server, "BUDGET")) {
      throw Fault(FaultKind::CannotOpen, 0, "55000",
                  "The database has budgets already; a sample company goes into an empty one only");
    }
    RunSample(connection, server, scripts.sample);
    transaction.Commit();
  } catch (...) {
    UndoQuietly(transaction);
    throw;
  }
}

}  // namespace talvex::adapters::odbc
