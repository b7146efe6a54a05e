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

const std::shared_ptr<const Environment>& InForce() {
  if (OfThread() != nullptr) return OfThread();
  if (OfProcess() != nullptr) return OfProcess();
  throw automation::Error(automation::error_number::kObjectNotSet, "Talvex.Platform",
                          "Object not set: no environment");
}

}  // namespace

const Environment& Environment::Current() { return *InForce(); }

std::shared_ptr<const Environment> Environment::CurrentShared() { return InForce(); }

void Environment::SetForProcess(std::shared_ptr<const Environment> environment) {
  OfProcess() = std::move(environment);
}

Environment::ForThread::ForThread(std::shared_ptr<const Environment> environment)
    : before_(std::exchange(OfThread(), std::move(environment))) {}

Environment::ForThread::~ForThread() { OfThread() = std::move(before_); }

}  // namespace talvex::platform
