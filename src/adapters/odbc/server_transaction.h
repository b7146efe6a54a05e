// A transaction on a server: how it begins and ends, and what a failure leaves of it.
#pragma once

#include <cstdint>

#include "adapters/odbc/connection.h"
#include "adapters/odbc/dialect.h"

namespace talvex::adapters::odbc {

// The transactions of one connection, one at a time. Everything raises Fault.
//
// SQL Server is told by statements of its language, in one message each. By the calls of ODBC its driver
// begins the next transaction with every commit, which then has to be undone: three messages instead of two.
// And what a session relies on can be said in the message that begins it. PostgreSQL's driver sends the
// beginning along with the first statement, so there it is left to the driver.
class ServerTransaction {
 public:
  ServerTransaction(Connection& connection, Server server) noexcept
      : connection_(connection), server_(server) {}

  // Says what the session relies on, whatever the server's defaults are or a statement has changed: that
  // statements tell how many rows they hit, that a statement which fails undoes itself alone where the server
  // can do so, that nothing begins a transaction by itself, and READ COMMITTED. For PostgreSQL there is
  // nothing to say.
  void StateSettings();

  // Begins one, on SQL Server with the settings stated anew. Raises, with nothing left open, when one was
  // open already: its commit would keep nothing.
  void Begin();
  // Raises when the server does not say that everything is kept.
  void Commit();
  // Undoes what is left; on SQL Server nothing may be left.
  void Rollback();

  // For SQL Server, after a failure: whether the server still has the transaction, and would commit it. Some
  // failures end it, and what is sent next would be kept on its own.
  [[nodiscard]] bool IsAlive() noexcept;

 private:
  // The one number that comes of a text for SQL Server.
  [[nodiscard]] std::int32_t Ask(std::string_view text);

  Connection& connection_;
  Server server_;
};

}  // namespace talvex::adapters::odbc
