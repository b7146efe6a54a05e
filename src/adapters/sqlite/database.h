// An open SQLite database.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>

namespace talvex::adapters::sqlite {

// A handle on a database file, used by one thread at a time. Everything raises Fault.
class Database {
 public:
  // Opens an existing file. `busy_timeout` says for how many milliseconds a locked database is waited for.
  Database(const std::string& path, int busy_timeout);

  // Makes a new file and runs the statements of the script in it, all or nothing. A path that is taken is
  // refused.
  static void Create(const std::string& path, std::string_view script);

  // Runs statements that take no parameters and whose rows nobody wants.
  void Run(const std::string& statements);

  // Passes a result code on; raises the fault for one that reports a failure.
  int Check(int code);

  [[nodiscard]] sqlite3* Handle() const noexcept { return handle_.get(); }
  [[nodiscard]] bool InTransaction() const noexcept { return sqlite3_get_autocommit(Handle()) == 0; }
  // Whether a failure has shown that the file cannot be trusted any more.
  [[nodiscard]] bool IsDamaged() const noexcept { return damaged_; }

 private:
  struct Close {
    void operator()(sqlite3* handle) const noexcept { sqlite3_close(handle); }
  };

  void Open(const std::string& path);
  void Configure(int busy_timeout);
  void Switch(int option, bool on);

  std::unique_ptr<sqlite3, Close> handle_;
  bool damaged_ = false;
};

}  // namespace talvex::adapters::sqlite
