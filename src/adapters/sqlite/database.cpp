#include "adapters/sqlite/database.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "adapters/sqlite/faults.h"

namespace talvex::adapters::sqlite {

namespace {

using platform::database::Fault;
using platform::database::FaultKind;

constexpr int kPatience = 5000;

[[noreturn]] void RefuseToOpen(const std::string& path, const std::string& reason) {
  throw Fault(FaultKind::CannotOpen, 4060, "08001", "Cannot open the database " + path + ": " + reason);
}

// SQLite makes the file that it does not find, and takes names such as ":memory:" and "file:..." for
// something else; an absolute path of a file that exists leaves it no choice.
std::string ExistingFile(const std::string& path) {
  std::error_code error;
  if (path.find('\0') != std::string::npos) RefuseToOpen("", "its path holds a NUL character");
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  if (path.empty() || error) RefuseToOpen(path, "there is no such file");
  const auto status = std::filesystem::status(absolute, error);
  if (!std::filesystem::exists(status)) RefuseToOpen(path, "there is no such file");
  if (!std::filesystem::is_regular_file(status)) RefuseToOpen(path, "it is not a file");
  return absolute.string();
}

// Makes an empty file, which is a database without tables, and only when the name is free.
void MakeEmptyFile(const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "wx");
  if (file == nullptr) RefuseToOpen(path, std::generic_category().message(errno));
  static_cast<void>(std::fclose(file));
}

void RemoveFiles(const std::string& path) noexcept {
  for (const char* const suffix : {"", "-wal", "-shm", "-journal"}) {
    static_cast<void>(std::remove((path + suffix).c_str()));
  }
}

}  // namespace

Database::Database(const std::string& path, int busy_timeout) {
  const std::string file = ExistingFile(path);
  try {
    Open(file);
    Configure(busy_timeout);
  } catch (const Fault& fault) {
    // SQLite does not say which file it could not open, or found to be no database.
    if (fault.Kind() == FaultKind::CannotOpen) RefuseToOpen(path, fault.what());
    throw;
  }
}

void Database::Open(const std::string& path) {
  sqlite3* handle = nullptr;
  // A session serves one thread at a time, so SQLite need not lock its own handle.
  const int code =
      sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(handle);
  Check(code);
  sqlite3_extended_result_codes(Handle(), 1);
}

void Database::Configure(int busy_timeout) {
  Check(sqlite3_busy_timeout(Handle(), busy_timeout));
  Switch(SQLITE_DBCONFIG_DQS_DML, false);
  Switch(SQLITE_DBCONFIG_DQS_DDL, false);
  Switch(SQLITE_DBCONFIG_DEFENSIVE, true);
  Switch(SQLITE_DBCONFIG_TRUSTED_SCHEMA, false);
  Switch(SQLITE_DBCONFIG_ENABLE_FKEY, true);
  Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;");
}

void Database::Switch(int option, bool on) {
  Check(sqlite3_db_config(Handle(), option, on ? 1 : 0, static_cast<int*>(nullptr)));
}

void Database::Create(const std::string& path, std::string_view script) {
  MakeEmptyFile(path);
  try {
    Database database(path, kPatience);
    // Nobody trusts the file before this returns, so the disk is waited for once, at the end.
    database.Run("PRAGMA synchronous = OFF");
    database.Run(std::string(script));
    if (database.InTransaction())
      throw Fault(FaultKind::Other, 0, "25000", "The script leaves a transaction open");
    database.Run("PRAGMA synchronous = FULL; PRAGMA wal_checkpoint(TRUNCATE)");
  } catch (...) {
    RemoveFiles(path);
    throw;
  }
}

void Database::Run(const std::string& statements) {
  Check(sqlite3_exec(Handle(), statements.c_str(), nullptr, nullptr, nullptr));
}

int Database::Check(int code) {
  if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return code;
  // Without a handle there was no memory to open the database, and SQLite has a message for the code alone.
  const char* const message = handle_ != nullptr ? sqlite3_errmsg(Handle()) : sqlite3_errstr(code);
  damaged_ = damaged_ || IsDamage(code);
  throw FaultOf(code, message);
}

}  // namespace talvex::adapters::sqlite
