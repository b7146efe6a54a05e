#include "support/test_store.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>

#include "adapters/odbc/connection.h"
#include "adapters/odbc/dialect.h"
#include "host/installer.h"
#include "support/temporary_folder.h"

namespace talvex::test {

namespace {

using adapters::odbc::Server;
using platform::database::ConnectionString;
using platform::database::Fault;

std::string ServerText() {
  const char* const text = std::getenv("TALVEX_TEST_STORE");  // NOLINT(concurrency-mt-unsafe)
  return text == nullptr ? "" : text;
}

adapters::odbc::Connection Connected(const std::string& connection_text) {
  return {std::make_shared<adapters::odbc::Environment>(), ConnectionString(connection_text)};
}

Server KindOfServer() {
  static const Server kind = adapters::odbc::ServerOf(Connected(ServerText()).ProductName());
  return kind;
}

bool IsSqlServer() { return !TestStore::IsEmbedded() && KindOfServer() == Server::SqlServer; }

// The server's connection string with another database.
std::string TextFor(const std::string& database) {
  const std::string server = ServerText();
  const std::string own = "Database=" + ConnectionString(server).Value("Database");
  const std::size_t place = server.find(own);
  if (place == std::string::npos) throw std::runtime_error("TALVEX_TEST_STORE must name a Database=");
  std::string text = server;
  return text.replace(place, own.size(), "Database=" + database);
}

void RunOn(const std::string& connection_text, const std::string& statement) {
  try {
    Connected(connection_text).Run(statement);
  } catch (const Fault& fault) {
    throw std::runtime_error(statement + ": " + fault.what());
  }
}

// A database with tables and texts, made by the real installer.
const std::string& Template() {
  static const std::string name = [] {
    const std::string fresh = "talvex_template_" + std::to_string(::getpid());
    RunOn(ServerText(), "CREATE DATABASE " + fresh);
    const TemporaryFolder folder;
    host::MakeInstallation({folder.Path("site"), false, TextFor(fresh)});
    return fresh;
  }();
  return name;
}

std::string CopyStatement(const std::string& source, const std::string& target) {
  if (IsSqlServer()) return "EXEC test_copy_database @source = '" + source + "', @target = '" + target + "'";
  return "CREATE DATABASE " + target + " TEMPLATE " + source + " STRATEGY FILE_COPY";
}

}  // namespace

bool TestStore::IsEmbedded() { return ServerText().empty(); }

TestStore::TestStore() {
  static std::atomic<int> next = 0;
  if (IsEmbedded()) return;
  name_ = "talvex_test_" + std::to_string(::getpid()) + "_" + std::to_string(next++);
  RunOn(ServerText(), CopyStatement(Template(), name_));
  connection_string_ = TextFor(name_);
}

TestStore::~TestStore() {
  if (name_.empty()) return;
  try {
    RunOn(ServerText(), "DROP DATABASE " + name_ + (IsSqlServer() ? "" : " WITH (FORCE)"));
  } catch (const std::exception&) {
    return;  // The whole server is thrown away after the tests.
  }
}

bool TestStore::HasClockOfItsOwn() { return IsSqlServer(); }

void TestStore::SetClock(automation::Date now) const {
  RunOn(connection_string_, "EXEC test_set_clock @now = '" + now.ToIso() + "'");
}

std::string TestStore::TablesQuery() {
  if (IsEmbedded()) return "SELECT name FROM sqlite_master WHERE type='table' ORDER BY name";
  if (IsSqlServer()) return "SELECT name FROM sys.tables ORDER BY name";
  return "SELECT relname FROM pg_class WHERE relkind='r' AND relnamespace='public'::regnamespace "
         "ORDER BY relname";
}

}  // namespace talvex::test
