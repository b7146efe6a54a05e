#include "support/test_store.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>

#include "adapters/odbc/driver.h"
#include "host/installer.h"
#include "support/temporary_folder.h"

namespace talvex::test {

namespace {

using platform::database::ConnectionString;
using platform::database::Fault;

std::string ServerText() {
  const char* const text = std::getenv("TALVEX_TEST_STORE");  // NOLINT(concurrency-mt-unsafe)
  return text == nullptr ? "" : text;
}

// The server's connection string with another database.
std::string TextFor(const std::string& database) {
  const std::string server = ServerText();
  const std::string own = "Database=" + ConnectionString(server).Value("Database");
  const std::size_t place = server.find(own);
  if (place == std::string::npos) throw std::runtime_error("TALVEX_TEST_STORE must name a Database=");
  std::string text = server;
  return text.replace(place, own.size(), "Database=" + database);
}

void RunOnServer(const std::string& statement) {
  try {
    adapters::odbc::OdbcDriver driver;
    const auto session = driver.Open(ConnectionString(ServerText()));
    session->Execute(statement, {}, platform::database::kAllRows);
  } catch (const Fault& fault) {
    throw std::runtime_error(statement + ": " + fault.what());
  }
}

// A database with tables and texts, made by the real installer.
const std::string& Template() {
  static const std::string name = [] {
    const std::string fresh = "talvex_template_" + std::to_string(::getpid());
    RunOnServer("CREATE DATABASE " + fresh);
    const TemporaryFolder folder;
    host::MakeInstallation({folder.Path("site"), false, TextFor(fresh)});
    return fresh;
  }();
  return name;
}

}  // namespace

bool TestStore::IsEmbedded() { return ServerText().empty(); }

TestStore::TestStore() {
  static std::atomic<int> next = 0;
  if (IsEmbedded()) return;
  name_ = "talvex_test_" + std::to_string(::getpid()) + "_" + std::to_string(next++);
  RunOnServer("CREATE DATABASE " + name_ + " TEMPLATE " + Template() + " STRATEGY FILE_COPY");
  connection_string_ = TextFor(name_);
}

TestStore::~TestStore() {
  if (name_.empty()) return;
  try {
    RunOnServer("DROP DATABASE " + name_ + " WITH (FORCE)");
  } catch (const std::exception&) {
    return;  // The whole server is thrown away after the tests.
  }
}

std::string TestStore::TablesQuery() {
  if (IsEmbedded()) return "SELECT name FROM sqlite_master WHERE type='table' ORDER BY name";
  return "SELECT relname FROM pg_class WHERE relkind='r' AND relnamespace='public'::regnamespace "
         "ORDER BY relname";
}

}  // namespace talvex::test
