// A database driver that fails when a test wants it to.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database/driver.h"

namespace talvex::test {

// What is to fail, and what was run. Shared by the sessions of one FailingDriver; safe to use from several
// threads.
class DatabaseScript {
 public:
  // From now on, the `nth` statement (from 1) whose text contains `part` fails; it does not reach the
  // database. One that failed passes the next time. Every Open, Begin and Commit counts as a statement
  // "OPEN", "BEGIN" or "COMMIT".
  void FailAt(std::string part, std::size_t nth, platform::database::Fault fault);

  // Nothing is to fail any more.
  void Heal();

  // Notes a statement, and raises its fault when it is the one to fail.
  void Pass(std::string_view text);

  // The texts of all statements, in order.
  [[nodiscard]] std::vector<std::string> Texts() const;
  // How many statements contain `part`.
  [[nodiscard]] std::size_t Count(std::string_view part) const;
  void ForgetTexts();

 private:
  struct Plan {
    std::string part;
    std::size_t left;
    platform::database::Fault fault;
  };

  mutable std::mutex mutex_;
  std::vector<Plan> plans_;
  std::vector<std::string> texts_;
};

// Passes everything on to another driver, except what its script lets fail. A Commit that fails has undone
// the transaction, as the contract of sessions says.
class FailingDriver final : public platform::database::Driver {
 public:
  explicit FailingDriver(std::shared_ptr<platform::database::Driver> inner);

  [[nodiscard]] DatabaseScript& Script() noexcept { return *script_; }
  [[nodiscard]] std::unique_ptr<platform::database::Session> Open(
      const platform::database::ConnectionString& connection_string) override;

 private:
  std::shared_ptr<platform::database::Driver> inner_;
  std::shared_ptr<DatabaseScript> script_;
};

}  // namespace talvex::test
