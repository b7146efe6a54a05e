// What time it is, as the component sees it.
#pragma once

#include "automation/date.h"

namespace talvex::platform {

// "Today" and "now" of everything: postings, validity of rules, file names, and GETDATE() of the embedded
// database.
class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual automation::Date Now() const = 0;  // Local time.
};

// A clock that stands still, for tests and for work as of a chosen moment.
class FixedClock final : public Clock {
 public:
  explicit FixedClock(automation::Date moment) : moment_(moment) {}
  [[nodiscard]] automation::Date Now() const override { return moment_; }

 private:
  automation::Date moment_;
};

}  // namespace talvex::platform
