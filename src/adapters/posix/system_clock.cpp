#include "adapters/posix/system_clock.h"

#include <algorithm>
#include <ctime>

namespace talvex::adapters::posix {

automation::Date SystemClock::Now() const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  // A leap second counts as the second before it.
  const int second = std::min(local.tm_sec, 59);
  return automation::Date::Civil(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                                 static_cast<unsigned>(local.tm_mday), local.tm_hour, local.tm_min, second);
}

}  // namespace talvex::adapters::posix
