// Database servers.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "adapters/odbc/session.h"
#include "automation/date.h"
#include "platform/database/driver.h"

namespace talvex::adapters::odbc {

// Opens databases through ODBC. The connection string goes to the driver manager as it is: what it may say is
// the drivers' own business ("Driver=FreeTDS;Server=db;Port=1433;Database=talvex;UID=..;PWD=..;
// Encryption=require", "Driver=PostgreSQL Unicode;Servername=db;Database=talvex;UID=..;PWD=..;
// sslmode=require").
//
// Texts are the SQL Server dialect's. SQL Server gets them unchanged; for PostgreSQL they are adapted.
// GETDATE() is what the server's clock says; with `fixed_now` it is that, and a server that cannot be told so
// is not opened.
class OdbcDriver final : public platform::database::Driver {
 public:
  explicit OdbcDriver(std::optional<automation::Date> fixed_now = std::nullopt);

  [[nodiscard]] std::unique_ptr<platform::database::Session> Open(
      const platform::database::ConnectionString& connection_string) override;

  // Over all sessions, also those that are closed.
  [[nodiscard]] const Counters& Counts() const noexcept { return *counters_; }

 private:
  std::shared_ptr<Environment> environment_;
  std::optional<automation::Date> fixed_now_;
  std::shared_ptr<Counters> counters_;
};

// What a database server is set up with.
struct Scripts {
  std::string_view sql_server;  // The tables, for each kind of server.
  std::string_view postgresql;
  std::string_view texts;   // Run when there are no texts of labels yet.
  std::string_view sample;  // Run last; empty for none.
};

// Makes the tables and fills them, all or nothing. Tables and texts that are there already stay as they are,
// so that another installation can join a database. Raises Fault; with a sample, also when the database has
// budgets already.
void SetUpDatabase(const platform::database::ConnectionString& connection_string, const Scripts& scripts);

}  // namespace talvex::adapters::odbc
