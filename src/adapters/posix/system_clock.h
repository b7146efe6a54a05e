// The clock of the machine.
#pragma once

#include "automation/date.h"
#include "platform/clock.h"

namespace talvex::adapters::posix {

// Local time in the zone of the process (TZ), to the second.
class SystemClock final : public platform::Clock {
 public:
  [[nodiscard]] automation::Date Now() const override;
};

}  // namespace talvex::adapters::posix
