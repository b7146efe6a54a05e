#include "platform/database/connection.h"

#include <utility>

#include "automation/transaction_context.h"
#include "platform/database/recordset.h"
#include "platform/database/session_pool.h"
#include "platform/environment.h"

namespace talvex::platform::database {

namespace {

using automation::Error;
namespace number = automation::error_number;

}  // namespace

std::string Connection::ConnectionText() const { return connection_string_; }

void Connection::SetConnectionText(const std::string& value) { connection_string_ = value; }

template <class Step>
auto Connection::Guarded(Step&& step) {
  errors_.clear();
  try {
    return step();
  } catch (const Fault& fault) {
    RaiseFault(fault);
  }
}

void Connection::RaiseFault(const Fault& fault) {
  auto error = std::make_shared<ProviderError>();
  error->Number = ErrorNumberOf(fault.Kind());
  error->NativeError = fault.NativeError();
  error->SQLState = fault.SqlState();
  error->Description = fault.what();
  error->Source = kErrorSource;
  errors_.push_back(error);
  RaiseAsError(fault);
}

void Connection::RaiseRowChanged(std::string_view table) {
  NoteConflict();
  throw Error(number::kRowChanged, kErrorSource,
              "Row cannot be located for updating: a row of " + std::string(table) +
                  " was changed or removed since it was read");
}

void Connection::Open(std::optional<std::string> text, std::optional<std::string> user,
                      std::optional<std::string> password, std::optional<std::int32_t> /*Options*/) {
  if (session_ != nullptr)
    throw Error(number::kObjectIsOpen, kErrorSource, "Operation is not allowed when the object is open");
  if (text) connection_string_ = std::move(*text);
  std::string complete = connection_string_;
  if (user && !user->empty()) complete += ";UID=" + ConnectionValue(*user);
  if (password && !password->empty()) complete += ";PWD=" + ConnectionValue(*password);
  session_ = Guarded([&] { return Environment::Current().sessions->Acquire(complete); });
}

void Connection::Close() {
  static_cast<void>(OpenSession());
  session_.reset();
}

ObjectState Connection::State() const {
  return session_ == nullptr ? ObjectState::Closed : ObjectState::Open;
}

Session& Connection::OpenSession() {
  if (session_ == nullptr) {
    throw Error(number::kObjectIsClosed, kErrorSource,
                "Operation is not allowed when the object is closed: the connection");
  }
  return *session_;
}

std::shared_ptr<automation::Collection> Connection::Errors() const {
  auto errors = std::make_shared<automation::Collection>();
  for (const auto& error : errors_) errors->Add(error, std::nullopt);
  return errors;
}

std::shared_ptr<Recordset> Connection::Execute(const std::string& text, automation::Variant* affected,
                                               std::optional<std::int32_t> /*Options*/) {
  Result result = Run(text, {}, kAllRows);
  if (affected != nullptr) *affected = static_cast<std::int32_t>(result.affected);
  return Recordset::Over(std::move(result), text, std::static_pointer_cast<Connection>(shared_from_this()));
}

Result Connection::Run(std::string_view text, std::span<const automation::Variant> parameters,
                       std::size_t most_rows) {
  Session& session = OpenSession();
  return Guarded([&] { return session.Execute(text, parameters, most_rows); });
}

void Connection::RunAsOne(const std::function<void()>& steps) {
  if (auto* const context = automation::TransactionContext::Current()) {
    try {
      steps();
    } catch (...) {
      context->SetAbort();  // Half of the steps must not be kept, whatever the caller does with the error.
      throw;
    }
    return;
  }
  Session& session = OpenSession();
  Guarded([&] { session.Begin(); });
  try {
    steps();
    Guarded([&] { session.Commit(); });
  } catch (...) {
    session.Rollback();
    throw;
  }
}

std::shared_ptr<const TableInfo> Connection::Table(std::string_view name) {
  Session& session = OpenSession();
  return Guarded([&] { return session.Table(name); });
}

}  // namespace talvex::platform::database
