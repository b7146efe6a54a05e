#include "host/transaction_host.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/environment.h"

namespace talvex::host {

using automation::TransactionContext;

namespace {

Outcome RunIn(TransactionContext& context, const std::function<void()>& body) {
  body();
  return context.Commit() ? Outcome::Committed : Outcome::Aborted;
}

// Lets the other one finish: a little longer every time, so that many that collide do not collide again.
void WaitBeforeAttempt(int attempt) {
  constexpr int kLongestShift = 7;
  std::this_thread::sleep_for(std::chrono::milliseconds(1 << std::min(attempt, kLongestShift)));
}

}  // namespace

TransactionHost::TransactionHost(automation::ObjectRef application) : application_(std::move(application)) {}

std::unique_ptr<TransactionContext> TransactionHost::Begin(automation::TransactionKind kind) const {
  auto context = std::make_unique<TransactionContext>(*platform::Environment::Current().classes, kind);
  context->Offer("Application", application_);
  return context;
}

Outcome TransactionHost::Run(const std::function<void()>& body) const { return RunWithRetry(body, 1); }

Outcome TransactionHost::RunWithRetry(const std::function<void()>& body, int attempts) const {
  return Repeat(automation::TransactionKind::Writing, body, attempts);
}

void TransactionHost::RunReading(const std::function<void()>& body, int attempts) const {
  static_cast<void>(Repeat(automation::TransactionKind::Reading, body, attempts));
}

Outcome TransactionHost::Repeat(automation::TransactionKind kind, const std::function<void()>& body,
                                int attempts) const {
  for (int attempt = 1;; ++attempt) {
    const auto context = Begin(kind);
    const bool last = attempt >= attempts;
    try {
      const Outcome outcome = RunIn(*context, body);
      if (outcome == Outcome::Committed || last || !context->HadConflict()) return outcome;
    } catch (...) {
      if (last || !context->HadConflict()) throw;
    }
    context->Rollback();
    WaitBeforeAttempt(attempt);
  }
}

}  // namespace talvex::host
