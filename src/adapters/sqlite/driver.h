// The embedded database.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "adapters/sqlite/session.h"
#include "automation/date.h"
#include "platform/database/driver.h"

namespace talvex::adapters::sqlite {

// Opens SQLite databases: "Driver=SQLite;Database=/srv/talvex/talvex.db". The file must exist. Another key,
// "BusyTimeout=", says for how many milliseconds a session waits for a database that another one is writing
// to; it is 5000 unless given.
//
// Texts are the SQL Server dialect's; what SQLite cannot read is adapted. GETDATE() is what `now` says when a
// statement asks for it; it is called on the thread that runs the statement.
class SqliteDriver final : public platform::database::Driver {
 public:
  explicit SqliteDriver(std::function<automation::Date()> now);

  [[nodiscard]] std::unique_ptr<platform::database::Session> Open(
      const platform::database::ConnectionString& connection_string) override;

  // Over all sessions, also those that are closed.
  [[nodiscard]] const StatementCounters& Counters() const noexcept { return *counters_; }

 private:
  std::function<automation::Date()> now_;
  std::shared_ptr<StatementCounters> counters_;
};

// Makes a new database file and runs the statements of the script in it, for an installation. A path that is
// taken raises Fault (CannotOpen) and stays as it is; when the script fails nothing is left of the file.
void CreateDatabase(const std::string& path, std::string_view script);

}  // namespace talvex::adapters::sqlite
