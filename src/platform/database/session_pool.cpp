#include "platform/database/session_pool.h"

#include <utility>

#include "automation/error.h"
#include "automation/transaction_context.h"

namespace talvex::platform::database {

namespace {

constexpr std::string_view kResourceKey = "platform.database";
constexpr std::size_t kMostIdle = 16;

// The one session of a transaction.
class EnlistedSession final : public automation::TransactionContext::Resource {
 public:
  EnlistedSession(std::string connection_string, std::shared_ptr<Session> session, bool reads_only)
      : connection_string_(std::move(connection_string)),
        session_(std::move(session)),
        reads_only_(reads_only) {}

  [[nodiscard]] const std::string& ConnectionText() const noexcept { return connection_string_; }
  [[nodiscard]] const std::shared_ptr<Session>& Get() const noexcept { return session_; }
  void Commit() override {
    // What only reads leaves nothing, whatever a query may have done beside it.
    if (reads_only_) return session_->Rollback();
    try {
      session_->Commit();
    } catch (const Fault& fault) {
      RaiseAsError(fault);
    }
  }
  void Rollback() noexcept override { session_->Rollback(); }

 private:
  std::string connection_string_;
  std::shared_ptr<Session> session_;
  bool reads_only_;
};

}  // namespace

void SessionPool::AddDriver(std::string_view name, std::shared_ptr<Driver> driver) {
  drivers_.insert_or_assign(std::string(name), std::move(driver));
}

std::shared_ptr<Session> SessionPool::Acquire(const std::string& connection_string) {
  auto* const context = automation::TransactionContext::Current();
  if (context == nullptr) return Take(connection_string);
  if (const auto* enlisted = static_cast<EnlistedSession*>(context->Find(kResourceKey))) {
    if (enlisted->ConnectionText() == connection_string) return enlisted->Get();
    throw automation::Error(automation::error_number::kInvalidCall, kErrorSource,
                            "Invalid procedure call: the transaction works on another database than " +
                                ConnectionString(connection_string).Shown());
  }
  std::shared_ptr<Session> session = Take(connection_string);
  const bool reads_only = context->Kind() == automation::TransactionKind::Reading;
  if (reads_only) {
    session->BeginReading();
  } else {
    session->Begin();
  }
  context->Enlist(kResourceKey, std::make_unique<EnlistedSession>(connection_string, session, reads_only));
  return session;
}

std::shared_ptr<Session> SessionPool::Take(const std::string& connection_string) {
  std::unique_ptr<Session> session;
  {
    const std::lock_guard lock(mutex_);
    auto& idle = idle_[connection_string];
    if (!idle.empty()) {
      session = std::move(idle.back());
      idle.pop_back();
    }
  }
  if (session == nullptr) session = Open(connection_string);
  return {session.release(), [pool = weak_from_this(), connection_string](Session* returned) {
            std::unique_ptr<Session> owned(returned);
            if (const auto alive = pool.lock()) alive->GiveBack(connection_string, std::move(owned));
          }};
}

std::unique_ptr<Session> SessionPool::Open(const std::string& connection_string) {
  const ConnectionString parts(connection_string);
  auto driver = drivers_.find(parts.Value("Driver"));
  if (driver == drivers_.end()) driver = drivers_.find(std::string_view());
  if (driver == drivers_.end()) {
    throw Fault(FaultKind::CannotOpen, 0, "IM002",
                "There is no driver for the connection string " + parts.Shown());
  }
  return driver->second->Open(parts);
}

void SessionPool::GiveBack(const std::string& connection_string, std::unique_ptr<Session> session) noexcept {
  const std::lock_guard lock(mutex_);
  auto& idle = idle_[connection_string];
  if (!session->Usable()) {
    // What broke it, a server that was restarted for example, has most likely broken the others too. Without
    // this each of them would fail one more call.
    idle.clear();
  } else if (idle.size() < kMostIdle) {
    idle.push_back(std::move(session));
  }
}

}  // namespace talvex::platform::database
