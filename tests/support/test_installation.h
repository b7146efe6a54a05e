// An installation of its own for one test, made by the real installer and composed by the real host.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "automation/variant.h"
#include "host/host.h"
#include "support/temporary_folder.h"
#include "support/test_store.h"
#include "support/values.h"

namespace talvex::test {

// Runs the body on a thread of its own, as the component's caches live as long as their thread, and raises
// what it raises.
void OnOwnThread(const std::function<void()>& body);

// One mail, as it stands in the outbox.
struct Mail {
  std::string from;
  std::string to;
  std::string subject;  // Decoded.
  std::string body;     // Decoded, line ends as sent.
};

// The clock stands still at the moment given. The environment is the calling thread's for as long as the
// object lives.
class TestInstallation {
 public:
  explicit TestInstallation(bool with_sample = false, const std::string& now = "2026-03-16T10:00:00");

  [[nodiscard]] const host::Host& Host() const noexcept { return *host_; }
  [[nodiscard]] std::string Path(const std::string& name) const { return folder_.Path("site/" + name); }
  [[nodiscard]] std::string DatabasePath() const { return Path("talvex.db"); }

  // Runs one statement beside the component; inside a transaction of the thread, as part of it.
  void Sql(const std::string& statement) const;
  // The rows of a query as texts, the cells joined by " | ": Null as "null", a date as "2026-03-15", an empty
  // text as "".
  [[nodiscard]] std::vector<std::string> Rows(const std::string& query) const;
  // Every row of every table, as one text.
  [[nodiscard]] std::string Snapshot() const;

  // The mails in the outbox, oldest first.
  [[nodiscard]] std::vector<Mail> Mails() const;
  // The lines of the error log.
  [[nodiscard]] std::vector<std::string> LogLines() const;

 private:
  TestStore store_;
  TemporaryFolder folder_;
  std::unique_ptr<host::Host> host_;
  std::unique_ptr<platform::Environment::ForThread> environment_;
};

}  // namespace talvex::test
