#include "adapters/odbc/server_transaction.h"

#include <string>

#include "adapters/odbc/statement.h"
#include "automation/conversions.h"

namespace talvex::adapters::odbc {

namespace {

using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::Result;

constexpr std::string_view kSettings =
    "SET NOCOUNT OFF; SET XACT_ABORT OFF; SET IMPLICIT_TRANSACTIONS OFF; "
    "SET TRANSACTION ISOLATION LEVEL READ COMMITTED";
constexpr std::string_view kBegin = "; BEGIN TRANSACTION; SELECT @@TRANCOUNT";
constexpr std::string_view kCommit = "COMMIT TRANSACTION; SELECT @@TRANCOUNT";
// A transaction that a failure has ended is not there to be rolled back.
constexpr std::string_view kRollback = "IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION";
// 1 for one transaction that can be committed.
constexpr std::string_view kIsAlive =
    "SELECT CASE WHEN @@TRANCOUNT = 1 AND XACT_STATE() = 1 THEN 1 ELSE 0 END";

}  // namespace

void ServerTransaction::StateSettings() {
  if (server_ == Server::SqlServer) connection_.Run(kSettings);
}

void ServerTransaction::Begin() {
  if (server_ == Server::PostgreSql) return connection_.SetAutocommit(false);
  try {
    if (Ask(std::string(kSettings).append(kBegin)) == 1) return;
  } catch (...) {
    // It may have begun all the same.
    Rollback();
    throw;
  }
  Rollback();
  throw Fault(FaultKind::Other, 0, "25001",
              "A transaction was open already, begun by a statement of its own; it has been undone");
}

void ServerTransaction::Commit() {
  if (server_ == Server::SqlServer) {
    if (Ask(kCommit) == 0) return;
    throw Fault(FaultKind::Other, 0, "25000",
                "A transaction was begun within the transaction and not ended; everything is undone");
  }
  connection_.EndTransaction(SQL_COMMIT);
  connection_.SetAutocommit(true);
}

void ServerTransaction::Rollback() {
  if (server_ == Server::SqlServer) return connection_.Run(kRollback);
  connection_.EndTransaction(SQL_ROLLBACK);
  connection_.SetAutocommit(true);
}

bool ServerTransaction::IsAlive() noexcept {
  try {
    return Ask(kIsAlive) == 1;
  } catch (...) {
    return false;  // Who cannot tell has nothing to go on with.
  }
}

std::int32_t ServerTransaction::Ask(std::string_view text) {
  Statement statement(connection_, server_, false);
  const Result result = statement.RunText(text, platform::database::kAllRows);
  const bool answered = result.rows.RowCount() == 1 && result.rows.TypeAt(0, 0) == automation::Kind::Int32;
  if (answered) return automation::ToInt32(result.rows.Value(0, 0));
  throw Fault(FaultKind::Other, 0, "HY000", "The server does not tell whether a transaction is open");
}

}  // namespace talvex::adapters::odbc
