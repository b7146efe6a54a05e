// The composition root: where the adapters are plugged in.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "automation/date.h"
#include "host/transaction_host.h"
#include "platform/database/connection.h"
#include "platform/environment.h"

namespace talvex::host {

struct Settings {
  std::string directory;                // Of the installation.
  std::optional<automation::Date> now;  // Fixes the clock, GETDATE() included; SQL Server is refused then.
};

// One installation, ready to work: its environment with the component's classes, the suite's services and the
// drivers, and transactions with the shared texts. Nothing is opened before a call needs it.
class Host {
 public:
  // Raises 53 when the directory is no installation.
  explicit Host(const Settings& settings);

  // To be made the process's (Environment::SetForProcess) or a thread's own (Environment::ForThread).
  [[nodiscard]] const std::shared_ptr<const platform::Environment>& Environment() const noexcept {
    return environment_;
  }
  [[nodiscard]] const TransactionHost& Transactions() const noexcept { return *transactions_; }
  // An open connection to the installation's database, for reading beside the component.
  [[nodiscard]] std::shared_ptr<platform::database::Connection> Connect() const;

 private:
  std::shared_ptr<const platform::Environment> environment_;
  std::function<std::string()> connection_string_;
  std::unique_ptr<TransactionHost> transactions_;
};

}  // namespace talvex::host
