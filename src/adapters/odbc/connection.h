// A connection of ODBC.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/odbc/faults.h"
#include "platform/database/connection_string.h"

namespace talvex::adapters::odbc {

// A handle of ODBC, released with the object.
class Handle {
 public:
  // `type` is SQL_HANDLE_ENV, SQL_HANDLE_DBC or SQL_HANDLE_STMT. Raises Fault when there is none to be had.
  Handle(SQLSMALLINT type, SQLHANDLE parent);
  ~Handle();
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  [[nodiscard]] SQLHANDLE Get() const noexcept { return handle_; }
  // All records that the last call on the handle has left.
  [[nodiscard]] std::vector<Diagnostic> Diagnostics() const;

 private:
  SQLSMALLINT type_;
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// What all connections share. Made once, it may be used by several threads.
class Environment {
 public:
  Environment();
  [[nodiscard]] SQLHANDLE Get() const noexcept { return handle_.Get(); }

 private:
  Handle handle_;
};

// An open connection, used by one thread at a time. Everything raises Fault.
class Connection {
 public:
  // Raises CannotOpen, with the connection string as it may be shown, when nobody answers.
  Connection(std::shared_ptr<Environment> environment,
             const platform::database::ConnectionString& connection_string);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  [[nodiscard]] SQLHANDLE Get() const noexcept { return handle_.Get(); }
  // What the server calls itself: "PostgreSQL", "Microsoft SQL Server".
  [[nodiscard]] const std::string& ProductName() const noexcept { return product_name_; }

  // Runs one statement that takes no parameters and whose rows nobody wants.
  void Run(std::string_view statement);

  // Statements on their own, each kept at once, or one transaction until EndTransaction.
  void SetAutocommit(bool on);
  // `how` is SQL_COMMIT or SQL_ROLLBACK.
  void EndTransaction(SQLSMALLINT how);

  // Passes on what a call on one of the connection's handles returned; raises the fault when it failed. A
  // call that affected no row succeeded.
  SQLRETURN Check(SQLRETURN code, const Handle& handle);

  // Whether a failure has shown that nobody is there any more.
  [[nodiscard]] bool IsLost() const noexcept { return lost_; }

 private:
  void Open(const platform::database::ConnectionString& connection_string);
  [[nodiscard]] bool IsDead() const noexcept;

  std::shared_ptr<Environment> environment_;
  Handle handle_;
  std::string product_name_;
  bool lost_ = false;
};

}  // namespace talvex::adapters::odbc
