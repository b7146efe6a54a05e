#include "adapters/sqlite/statement_clock.h"

#include <exception>
#include <utility>

namespace talvex::adapters::sqlite {

StatementClock::StatementClock(Database& database, NowFunction now) : now_(std::move(now)) {
  // Innocuous: tables may use it in defaults and constraints.
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS;
  database.Check(sqlite3_create_function_v2(database.Handle(), "GETDATE", 0, kFlags, this,
                                            &StatementClock::GetDate, nullptr, nullptr, nullptr));
}

const std::string& StatementClock::Moment() {
  if (!moment_) moment_ = now_().ToIso();
  return *moment_;
}

// No exception may pass through SQLite, which is written in C.
void StatementClock::GetDate(sqlite3_context* context, int /*count*/, sqlite3_value** /*arguments*/) {
  auto* const clock = static_cast<StatementClock*>(sqlite3_user_data(context));
  try {
    const std::string& moment = clock->Moment();
    sqlite3_result_text(context, moment.data(), static_cast<int>(moment.size()), SQLITE_TRANSIENT);
  } catch (const std::exception& error) {
    sqlite3_result_error(context, error.what(), -1);
  }
}

}  // namespace talvex::adapters::sqlite
