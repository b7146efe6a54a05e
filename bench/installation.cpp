#include "installation.h"

#include <unistd.h>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "host/installer.h"
#include "platform/environment.h"

namespace talvex::bench {

namespace fs = std::filesystem;

namespace {

// A benchmark that cannot do its work must not print a time for it.
void Require(bool done, const char* what, sqlite3* database) {
  if (done) return;
  std::fprintf(stderr, "%s: %s\n", what, database == nullptr ? "" : sqlite3_errmsg(database));
  std::abort();
}

}  // namespace

Installation::Installation() {
  static std::atomic<int> next = 0;
  directory_ = (fs::temp_directory_path() /
                ("talvex-bench-" + std::to_string(::getpid()) + "-" + std::to_string(next++)))
                   .string();
  host::MakeInstallation({directory_, false, {}});
  host_ = std::make_unique<host::Host>(host::Settings{directory_, automation::Date::Civil(2026, 3, 16, 10)});
}

Installation::~Installation() {
  host_.reset();
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

void Installation::Script(const std::string& statements) const {
  sqlite3* database = nullptr;
  Require(sqlite3_open(DatabasePath().c_str(), &database) == SQLITE_OK, "open", database);
  Require(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, "set up",
          database);
  sqlite3_close(database);
}

void RunOn(const Installation& installation, const std::function<void()>& body) {
  std::thread([&] {
    const platform::Environment::ForThread environment(installation.Host().Environment());
    body();
  }).join();
}

BareDatabase::BareDatabase(const std::string& path) {
  Require(sqlite3_open(path.c_str(), &database_) == SQLITE_OK, "open", database_);
  Run("PRAGMA journal_mode=WAL");
  Run("PRAGMA synchronous=FULL");
  Run("PRAGMA foreign_keys=ON");
}

BareDatabase::~BareDatabase() {
  for (sqlite3_stmt* left = sqlite3_next_stmt(database_, nullptr); left != nullptr;
       left = sqlite3_next_stmt(database_, nullptr)) {
    sqlite3_finalize(left);
  }
  sqlite3_close(database_);
}

sqlite3_stmt* BareDatabase::Prepare(const char* text) {
  sqlite3_stmt* statement = nullptr;
  Require(
      sqlite3_prepare_v3(database_, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) == SQLITE_OK,
      text, database_);
  return statement;
}

void BareDatabase::Run(const char* text) {
  Require(sqlite3_exec(database_, text, nullptr, nullptr, nullptr) == SQLITE_OK, text, database_);
}

}  // namespace talvex::bench
