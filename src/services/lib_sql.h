// The small, fixed set of ways in which the component runs SQL. All record sets are kept at the client. A
// failure names the statement: in its information text, after the provider errors where record sets are
// opened, or in the method's name where dictionaries are read.
#pragma once

#include <memory>
#include <string>

#include "automation/dictionary.h"
#include "platform/database/connection.h"
#include "platform/database/recordset.h"

namespace talvex::Lib_SQL {

using platform::database::Connection;
using platform::database::LockType;
using platform::database::Recordset;

// Runs a statement on a connection of its own and closes that at once: for statements that return no rows.
std::shared_ptr<Recordset> Sql_ExecuteSQL(const std::string& sql);

// The rows of a query, read-only and detached. Without a connection one of its own is opened and closed; a
// connection given stays open.
[[nodiscard]] std::shared_ptr<Recordset> Sql_GetDisconnectedRecordset(
    const std::string& sql, const std::shared_ptr<Connection>& connection);

// The rows of a query, read-only, on the caller's connection.
[[nodiscard]] std::shared_ptr<Recordset> Sql_GetReadonlyRecordset(
    const std::string& sql, const std::shared_ptr<Connection>& connection);

// The rows of a query, detached, to be changed and written later through a connection of the caller's.
[[nodiscard]] std::shared_ptr<Recordset> SQL_GetWritableRecordset(
    const std::string& sql, const std::shared_ptr<Connection>& connection, LockType lock_type);

// The rows of a query, to be changed and written on the caller's connection.
[[nodiscard]] std::shared_ptr<Recordset> Sql_GetUpdateableRecordset(
    const std::string& sql, const std::shared_ptr<Connection>& connection, LockType lock_type);

// First column to second column of a query's rows, read on a connection of its own. A key that comes twice
// fails the call.
[[nodiscard]] std::shared_ptr<automation::Dictionary> Sql_GetRecordsAsDictionary(
    const std::string& sql, const std::string& connection_string);

// Key column to value column of a query's rows. Closes the caller's connection and votes: complete, or abort
// on failure.
[[nodiscard]] std::shared_ptr<automation::Dictionary> Sql_getRecords(std::shared_ptr<Connection>& connection,
                                                                     const std::string& sql,
                                                                     const std::string& key_column,
                                                                     const std::string& value_column);

// Closes a record set, its pending edit abandoned, and releases the reference. An empty or closed one is only
// released. Inside a handler the pending error survives, whatever happens here.
void CloseRecordset(std::shared_ptr<Recordset>& recordset);

// Closes a record set and its connection, takes the connection off the set, whoever else holds the set, and
// releases the reference. A clone is a set of its own and keeps the connection, closed. Has no handler.
void Sql_CloseRecordsetAndConnection(std::shared_ptr<Recordset>& recordset);

}  // namespace talvex::Lib_SQL
