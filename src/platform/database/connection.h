// Connections to databases.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/class_info.h"
#include "automation/collection.h"
#include "platform/database/constants.h"
#include "platform/database/driver.h"

namespace talvex::platform::database {

class Recordset;

// One error as the database reported it.
class ProviderError final : public automation::Object {
  TALVEX_CLASS(ProviderError, "Platform.ProviderError", "One error as the database reported it.");

 public:
  TALVEX_PROPERTY(std::int32_t, Number, "The error's number in the record-set interface.");
  TALVEX_PROPERTY(std::int32_t, NativeError, "The database's own number, as SQL Server counts them.");
  TALVEX_PROPERTY(std::string, SQLState, "The five characters of the standard's classification.");
  TALVEX_PROPERTY(std::string, Description, "What the database said.");
  TALVEX_PROPERTY(std::string, Source, "Which driver said it.");
};

// A handle on a session with a database. Outside a transaction every statement stands on its own; inside one
// all connections of the thread share its session, and closing one neither commits nor undoes anything.
class Connection final : public automation::Object {
  TALVEX_CLASS(Connection, "Platform.Connection", "A connection to a database.");

 public:
  Connection() = default;

  TALVEX_METHOD(void, Open,
                (std::optional<std::string> ConnectionString, std::optional<std::string> UserID,
                 std::optional<std::string> Password, std::optional<std::int32_t> Options),
                "Opens the connection with the string given, or with the property ConnectionString. UserID "
                "and Password, when not empty, are added to it. An open connection raises 3705.");
  TALVEX_METHOD(void, Close, (), "Closes the connection; a closed one raises 3704.");
  TALVEX_METHOD(
      std::shared_ptr<Recordset>, Execute,
      (const std::string& CommandText, automation::Variant* RecordsAffected,
       std::optional<std::int32_t> Options),
      "Runs one statement. Returns its rows as a read-only record set, a closed one for a statement without "
      "rows; RecordsAffected receives the number of rows written.");
  TALVEX_READONLY(ObjectState, State, "State", "0 closed, 1 open.");
  TALVEX_READONLY(std::shared_ptr<automation::Collection>, Errors, "Errors",
                  "The errors of the last operation, in the order in which the database reported them.");
  TALVEX_ACCESSORS(std::string, ConnectionText, "ConnectionString", "What the connection is opened with.");
  TALVEX_PROPERTY(std::int32_t, IsolationLevel, "The isolation level asked for; 4096 is read committed.");

  // For the record sets, which read and write through a connection. Failures are raised as errors of the
  // record-set interface, kept in Errors, and told to the transaction when they are conflicts.
  Result Run(std::string_view text, std::span<const automation::Variant> parameters, std::size_t most_rows);
  // Runs the steps as one: all of them are kept or none, also when the connection is in no transaction.
  void RunAsOne(const std::function<void()>& steps);
  [[nodiscard]] std::shared_ptr<const TableInfo> Table(std::string_view name);
  // Raises -2147217864: the row was changed or removed by somebody else since it was read.
  [[noreturn]] void RaiseRowChanged(std::string_view table);

 private:
  [[nodiscard]] Session& OpenSession();
  template <class Step>
  auto Guarded(Step&& step);
  [[noreturn]] void RaiseFault(const Fault& fault);

  std::string connection_string_;
  std::shared_ptr<Session> session_;
  std::vector<std::shared_ptr<ProviderError>> errors_;
};

}  // namespace talvex::platform::database

// A connection answers with record sets, so whoever can call one needs to know them too.
#include "platform/database/recordset.h"  // IWYU pragma: keep
