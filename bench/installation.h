// An installation for a benchmark, and the bare database beside it.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <string>

#include "host/host.h"

namespace talvex::bench {

// Made by the real installer in a temporary directory that vanishes with the object. A benchmark puts the
// host's environment in place for its own thread.
class Installation {
 public:
  Installation();
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  [[nodiscard]] const host::Host& Host() const noexcept { return *host_; }
  [[nodiscard]] std::string DatabasePath() const { return directory_ + "/talvex.db"; }
  // Runs statements on the bare database, for setting up.
  void Script(const std::string& statements) const;

 private:
  std::string directory_;
  std::unique_ptr<host::Host> host_;
};

// Runs the body in the installation's environment, on a thread of its own: the component remembers, for each
// thread, which database it works on. Benchmarks that use it measure the time of the process.
void RunOn(const Installation& installation, const std::function<void()>& body);

// The bare database API, with the settings that the component's driver uses.
class BareDatabase {
 public:
  explicit BareDatabase(const std::string& path);
  ~BareDatabase();
  BareDatabase(const BareDatabase&) = delete;
  BareDatabase& operator=(const BareDatabase&) = delete;

  [[nodiscard]] sqlite3_stmt* Prepare(const char* text);
  void Run(const char* text);

 private:
  sqlite3* database_ = nullptr;
};

}  // namespace talvex::bench
