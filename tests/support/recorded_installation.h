// An installation whose database driver tells what it was asked and fails on demand.
#pragma once

#include <memory>

#include "adapters/sqlite/driver.h"
#include "platform/database/session_pool.h"
#include "platform/environment.h"
#include "support/failing_driver.h"
#include "support/test_installation.h"

namespace talvex::test {

class RecordedInstallation {
 public:
  explicit RecordedInstallation(bool with_sample = false)
      : installation_(with_sample),
        sqlite_(std::make_shared<adapters::sqlite::SqliteDriver>(
            [clock = platform::Environment::Current().clock] { return clock->Now(); })),
        driver_(std::make_shared<FailingDriver>(sqlite_)),
        environment_(std::make_shared<platform::Environment>(platform::Environment::Current())),
        for_thread_(environment_) {
    environment_->sessions = std::make_shared<platform::database::SessionPool>();
    environment_->sessions->AddDriver("SQLite", driver_);
  }

  [[nodiscard]] const TestInstallation& Site() const noexcept { return installation_; }
  [[nodiscard]] DatabaseScript& Script() noexcept { return driver_->Script(); }
  [[nodiscard]] const adapters::sqlite::StatementCounters& Counters() const noexcept {
    return sqlite_->Counters();
  }
  [[nodiscard]] platform::Environment& Environment() noexcept { return *environment_; }

 private:
  TestInstallation installation_;
  std::shared_ptr<adapters::sqlite::SqliteDriver> sqlite_;
  std::shared_ptr<FailingDriver> driver_;
  std::shared_ptr<platform::Environment> environment_;
  platform::Environment::ForThread for_thread_;
};

}  // namespace talvex::test
