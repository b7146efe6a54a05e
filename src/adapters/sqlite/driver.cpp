#include "adapters/sqlite/driver.h"

#include <charconv>
#include <utility>

#include "adapters/sqlite/database.h"

namespace talvex::adapters::sqlite {

namespace {

using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;

constexpr int kBusyTimeout = 5000;

int BusyTimeoutOf(const ConnectionString& connection_string) {
  const std::string text = connection_string.Value("BusyTimeout");
  if (text.empty()) return kBusyTimeout;
  int milliseconds = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, milliseconds);
  if (error == std::errc() && stopped == end && milliseconds >= 0) return milliseconds;
  throw Fault(FaultKind::CannotOpen, 4060, "08001",
              "BusyTimeout takes a number of milliseconds, not " + text);
}

}  // namespace

SqliteDriver::SqliteDriver(std::function<automation::Date()> now)
    : now_(std::move(now)), counters_(std::make_shared<StatementCounters>()) {}

std::unique_ptr<platform::database::Session> SqliteDriver::Open(const ConnectionString& connection_string) {
  return std::make_unique<SqliteSession>(connection_string.Value("Database"),
                                         BusyTimeoutOf(connection_string), now_, counters_);
}

void CreateDatabase(const std::string& path, std::string_view script) { Database::Create(path, script); }

}  // namespace talvex::adapters::sqlite
