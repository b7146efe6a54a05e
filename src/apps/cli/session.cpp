#include "apps/cli/session.h"

#include <sstream>

#include <nlohmann/json.hpp>

#include "automation/transaction_context.h"
#include "platform/environment.h"

namespace talvex::apps {

namespace {

constexpr int kAttempts = 5;

}  // namespace

void Session::Print(const Json& answer) const {
  *out_ << answer.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

const host::Host& Session::Host() {
  if (host_ == nullptr) {
    if (options_.directory.empty()) {
      throw UsageError("no installation is given: say --config DIR or set TALVEX_CONFIG");
    }
    host_ = std::make_unique<host::Host>(host::Settings{options_.directory, options_.now});
    platform::Environment::SetForProcess(host_->Environment());
  }
  return *host_;
}

host::Outcome Session::InTransaction(const std::function<void()>& body) {
  return Host().Transactions().RunWithRetry(body, kAttempts);
}

ExitStatus Session::Reading(const std::function<ExitStatus()>& body) {
  std::ostream& out = *out_;
  std::ostringstream told;
  ExitStatus status = ExitStatus::Failed;
  out_ = &told;
  try {
    ReadFirst([&] {
      told.str({});  // An attempt that was undone tells nothing.
      status = body();
    });
  } catch (...) {
    out_ = &out;
    throw;
  }
  out_ = &out;
  out << told.view();
  return status;
}

void Session::ReadFirst(const std::function<void()>& body) {
  Host().Transactions().RunReading(body, kAttempts);
}

automation::Date Session::Now() { return Host().Environment()->clock->Now(); }

automation::ObjectRef Session::Create(const std::string& class_name) {
  if (const auto* context = automation::TransactionContext::Current())
    return context->CreateInstance(class_name);
  return Host().Environment()->classes->Create(class_name);
}

}  // namespace talvex::apps
