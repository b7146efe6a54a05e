#include "platform/environment.h"

#include <utility>

namespace talvex::platform {

namespace {

std::shared_ptr<const Environment>& OfProcess() {
  static std::shared_ptr<const Environment> environment;
  return environment;
}

std::shared_ptr<const Environment>& OfThread() {
  thread_local std::shared_ptr<const Environment> environment;
  return environment;
}

}  // namespace

const Environment& Environment::Current() {
  if (const Environment* own = OfThread().get()) return *own;
  if (const Environment* shared = OfProcess().get()) return *shared;
  throw automation::Error(automation::error_number::kObjectNotSet, "Talvex.Platform",
                          "Object not set: no environment");
}

void Environment::SetForProcess(std::shared_ptr<const Environment> environment) {
  OfProcess() = std::move(environment);
}

Environment::ForThread::ForThread(std::shared_ptr<const Environment> environment)
    : before_(std::exchange(OfThread(), std::move(environment))) {}

Environment::ForThread::~ForThread() { OfThread() = std::move(before_); }

}  // namespace talvex::platform
