// Where mail waits for being sent.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "adapters/suite/installation.h"
#include "automation/date.h"

namespace talvex::adapters::suite {

// The folder outbox/ of the installation: one file a mail. A name that begins with ".pending-" is no mail
// yet.
class Outbox {
 public:
  explicit Outbox(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  // A new id for a mail, made of letters, digits and "-". Ids sort by `now`, and within a second in the order
  // in which the process made them; a random part keeps those of several processes and machines apart.
  [[nodiscard]] static std::string NewId(automation::Date now);

  // Writes the file `id`.eml, whole or not at all. Inside a transaction of the thread it is pending until the
  // transaction commits, and vanishes when it does not; a pending file that then cannot be renamed is told to
  // the log and stays. Raises what Files::WriteNew raises.
  void Put(const std::string& id, std::string_view content) const;

 private:
  std::shared_ptr<const Installation> installation_;
};

}  // namespace talvex::adapters::suite
