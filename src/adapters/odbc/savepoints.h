// Savepoints in the transactions of a session with PostgreSQL.
#pragma once

#include "adapters/odbc/connection.h"

namespace talvex::adapters::odbc {

// A transaction of PostgreSQL is lost with the first statement that fails in it, unless there is a savepoint
// to go back to. Its driver would set one before every statement, which nearly doubles the round trips. One
// before the first statement behind a change is enough: reading leaves nothing to be undone.
//
// Each session has one, told of all that happens in its transactions.
class Savepoints {
 public:
  // The connection string, with what keeps the driver from setting savepoints where its Driver is psqlodbc
  // and it does not say itself how failures are undone (Protocol).
  [[nodiscard]] static platform::database::ConnectionString WithoutTheDrivers(
      const platform::database::ConnectionString& connection_string);

  // Whether savepoints are set here follows from the connection string that the session was opened with.
  explicit Savepoints(const platform::database::ConnectionString& connection_string);

  // A transaction begins.
  void Begin() noexcept { place_ = Place::Nowhere; }
  // Whether there is one in the transaction.
  [[nodiscard]] bool Any() const noexcept { return place_ != Place::Nowhere; }
  // A statement is to be run. Raises Fault.
  void BeforeStatement(Connection& connection);
  // It was run, and may have changed something.
  void AfterChange() noexcept;
  // It has failed. False when the transaction is lost with it.
  [[nodiscard]] bool Undo(Connection& connection) noexcept;

 private:
  enum class Place { Nowhere, BehindAllChanges, BeforeAChange };

  bool set_here_;
  Place place_ = Place::Nowhere;
};

}  // namespace talvex::adapters::odbc
