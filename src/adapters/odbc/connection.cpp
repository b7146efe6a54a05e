#include "adapters/odbc/connection.h"

#include <array>
#include <cstdint>
#include <utility>

#include "adapters/odbc/wide_text.h"

namespace talvex::adapters::odbc {

namespace {

using platform::database::Fault;
using platform::database::FaultKind;

// ODBC passes numbers as pointers.
SQLPOINTER NumberPointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

Handle::Handle(SQLSMALLINT type, SQLHANDLE parent) : type_(type) {
  if (SQL_SUCCEEDED(SQLAllocHandle(type, parent, &handle_))) return;
  throw Fault(FaultKind::CannotOpen, 0, "HY001", "The driver manager of ODBC gives no handle");
}

Handle::~Handle() { SQLFreeHandle(type_, handle_); }

std::vector<Diagnostic> Handle::Diagnostics() const {
  std::vector<Diagnostic> records;
  std::vector<SQLWCHAR> message(1024);
  for (SQLSMALLINT number = 1;;) {
    std::array<SQLWCHAR, 6> state{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const SQLRETURN code = SQLGetDiagRecW(type_, handle_, number, state.data(), &native, message.data(),
                                          static_cast<SQLSMALLINT>(message.size()), &length);
    if (!SQL_SUCCEEDED(code)) return records;
    const auto needed = static_cast<std::size_t>(length) + 1;
    if (needed > message.size()) {
      message.resize(needed);
      continue;
    }
    records.push_back({ToNarrow(std::span(state).first(5)), static_cast<std::int32_t>(native),
                       ToNarrow(std::span(message).first(static_cast<std::size_t>(length)))});
    ++number;
  }
}

Environment::Environment() : handle_(SQL_HANDLE_ENV, SQL_NULL_HANDLE) {
  SQLSetEnvAttr(handle_.Get(), SQL_ATTR_ODBC_VERSION, NumberPointer(SQL_OV_ODBC3), 0);
}

Connection::Connection(std::shared_ptr<Environment> environment,
                       const platform::database::ConnectionString& connection_string)
    : environment_(std::move(environment)), handle_(SQL_HANDLE_DBC, environment_->Get()) {
  Open(connection_string);
}

Connection::~Connection() { SQLDisconnect(handle_.Get()); }

void Connection::Open(const platform::database::ConnectionString& connection_string) {
  WideText text = ToWide(connection_string.Text());
  SQLSMALLINT length = 0;
  const SQLRETURN code =
      SQLDriverConnectW(handle_.Get(), nullptr, text.data(), static_cast<SQLSMALLINT>(text.size()), nullptr,
                        0, &length, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(code)) {
    const Fault reason = FaultOf(handle_.Diagnostics());
    const bool known = reason.Kind() == FaultKind::CannotOpen;
    throw Fault(FaultKind::CannotOpen, known ? reason.NativeError() : 4060,
                known ? reason.SqlState() : "08001",
                "Cannot open the database " + connection_string.Shown() + ": " + reason.what());
  }
  std::array<SQLWCHAR, 128> name{};
  SQLGetInfoW(handle_.Get(), SQL_DBMS_NAME, name.data(), sizeof name, &length);
  product_name_ = ToNarrow(std::span(name).first(static_cast<std::size_t>(length) / sizeof(SQLWCHAR)));
}

void Connection::Run(std::string_view statement) {
  const Handle handle(SQL_HANDLE_STMT, handle_.Get());
  WideText text = ToWide(statement);
  SQLRETURN code = SQLExecDirectW(handle.Get(), text.data(), static_cast<SQLINTEGER>(text.size()));
  for (; code != SQL_NO_DATA; code = SQLMoreResults(handle.Get())) Check(code, handle);
}

void Connection::SetAutocommit(bool on) {
  const auto value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  Check(SQLSetConnectAttrW(handle_.Get(), SQL_ATTR_AUTOCOMMIT, NumberPointer(value), 0), handle_);
}

void Connection::EndTransaction(SQLSMALLINT how) {
  Check(SQLEndTran(SQL_HANDLE_DBC, handle_.Get(), how), handle_);
}

SQLRETURN Connection::Check(SQLRETURN code, const Handle& handle) {
  if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return code;
  const auto records = handle.Diagnostics();
  lost_ = lost_ || TellsLoss(records) || IsDead();
  if (lost_) throw LossOf(records);
  throw FaultOf(records);
}

bool Connection::IsDead() const noexcept {
  SQLUINTEGER dead = SQL_CD_FALSE;
  const SQLRETURN code = SQLGetConnectAttrW(handle_.Get(), SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr);
  return SQL_SUCCEEDED(code) && dead == SQL_CD_TRUE;
}

}  // namespace talvex::adapters::odbc
