// What GETDATE() answers.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "adapters/sqlite/database.h"
#include "automation/date.h"

namespace talvex::adapters::sqlite {

using NowFunction = std::function<automation::Date()>;

// GETDATE() of one session: the moment, time of day included, at which a statement asks for the first time.
// It stays the same for the whole statement, so that no row is judged by another moment than its neighbours.
class StatementClock {
 public:
  // Registers GETDATE() with the database, which must not use it any more when the clock is gone.
  StatementClock(Database& database, NowFunction now);
  StatementClock(const StatementClock&) = delete;
  StatementClock& operator=(const StatementClock&) = delete;

  void StartStatement() noexcept { moment_.reset(); }

 private:
  [[nodiscard]] const std::string& Moment();
  static void GetDate(sqlite3_context* context, int count, sqlite3_value** arguments);

  NowFunction now_;
  std::optional<std::string> moment_;
};

}  // namespace talvex::adapters::sqlite
