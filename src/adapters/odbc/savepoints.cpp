#include "adapters/odbc/savepoints.h"

#include "automation/text.h"

namespace talvex::adapters::odbc {

using platform::database::ConnectionString;
using platform::database::Fault;

namespace {

constexpr const char* kProtocol = "Protocol";

bool NamesPsqlOdbc(const ConnectionString& connection_string) {
  const std::string driver = automation::Folded(connection_string.Value("Driver"));
  return driver.find("postgresql") != std::string::npos || driver.find("psqlodbc") != std::string::npos;
}

}  // namespace

ConnectionString Savepoints::WithoutTheDrivers(const ConnectionString& connection_string) {
  if (!NamesPsqlOdbc(connection_string) || !connection_string.Value(kProtocol).empty())
    return connection_string;
  const std::string& text = connection_string.Text();
  return ConnectionString(text + (text.ends_with(';') ? "" : ";") + kProtocol + "=7.4-0");
}

Savepoints::Savepoints(const ConnectionString& connection_string)
    : set_here_(connection_string.Value(kProtocol).ends_with("-0")) {}

void Savepoints::BeforeStatement(Connection& connection) {
  if (!set_here_ || place_ == Place::BehindAllChanges) return;
  connection.Run(place_ == Place::Nowhere ? "SAVEPOINT talvex" : "RELEASE SAVEPOINT talvex;SAVEPOINT talvex");
  place_ = Place::BehindAllChanges;
}

void Savepoints::AfterChange() noexcept {
  if (place_ == Place::BehindAllChanges) place_ = Place::BeforeAChange;
}

bool Savepoints::Undo(Connection& connection) noexcept {
  if (!set_here_) return true;
  if (place_ != Place::BehindAllChanges) return false;
  try {
    connection.Run("ROLLBACK TO SAVEPOINT talvex");
    return true;
  } catch (const Fault&) {
    return false;
  }
}

}  // namespace talvex::adapters::odbc
