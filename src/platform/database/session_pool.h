// Sessions with databases, kept for the next caller.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "automation/text.h"
#include "platform/database/driver.h"

namespace talvex::platform::database {

// Gives out sessions by connection string. Opening a database and preparing its statements costs far more
// than a posting, so a session that is given back stays open for the next caller. Safe to use from several
// threads; a session itself serves one at a time.
class SessionPool : public std::enable_shared_from_this<SessionPool> {
 public:
  // `name` is what "Driver=" says in a connection string, without regard to case; the empty name serves all
  // others.
  void AddDriver(std::string_view name, std::shared_ptr<Driver> driver);

  // A session that goes back to the pool when its last holder lets go. Inside a transaction of the calling
  // thread it is the transaction's own session, begun when it is first asked for, and the same for every
  // caller; another connection string than the transaction's raises 5. A database that cannot be opened
  // raises Fault.
  [[nodiscard]] std::shared_ptr<Session> Acquire(const std::string& connection_string);

 private:
  [[nodiscard]] std::shared_ptr<Session> Take(const std::string& connection_string);
  [[nodiscard]] std::unique_ptr<Session> Open(const std::string& connection_string);
  void GiveBack(const std::string& connection_string, std::unique_ptr<Session> session) noexcept;

  std::mutex mutex_;
  std::unordered_map<std::string, std::shared_ptr<Driver>, automation::FoldedHash, automation::FoldedEqual>
      drivers_;
  std::map<std::string, std::vector<std::unique_ptr<Session>>, std::less<>> idle_;
};

}  // namespace talvex::platform::database
