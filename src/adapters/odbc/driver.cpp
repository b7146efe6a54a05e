#include "adapters/odbc/driver.h"

#include <utility>

#include "platform/database/sql_script.h"

namespace talvex::adapters::odbc {

namespace {

using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::StatementsOf;

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
  connection.SetAutocommit(false);
  try {
    RunScript(connection, server == Server::PostgreSql ? scripts.postgresql : scripts.sql_server);
    if (!HasRows(connection, server, "I18NTEXT")) RunScript(connection, scripts.texts);
    if (!scripts.sample.empty() && HasRows(connection, server, "BUDGET")) {
      throw Fault(FaultKind::CannotOpen, 0, "55000",
                  "The database has budgets already; a sample company goes into an empty one only");
    }
    RunSample(connection, server, scripts.sample);
    connection.EndTransaction(SQL_COMMIT);
  } catch (...) {
    SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_ROLLBACK);
    throw;
  }
}

}  // namespace talvex::adapters::odbc
