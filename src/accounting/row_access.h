// What the maintenance of ledger accounts and of accounting rules shares.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "automation/conversions.h"
#include "platform/database/recordset.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/required.h"

namespace talvex {

// Runs a method that changes rows, on a connection that is closed and a vote that is cast at its end. What
// the database refuses gets the number by which callers tell it. Returns true.
template <class Body>
bool ChangesRows(std::string_view method, Body&& body) {
  std::shared_ptr<platform::database::Connection> connection;
  return Handled(
      method,
      [&] {
        connection = Lib_General::getConnection();
        std::forward<Body>(body)(connection);
        Lib_General::Gen_CloseConnection(connection);
        Lib_MTS::MTS_SetComplete();
        return true;
      },
      [&] {
        Lib_ErrorHandling::Err_MapDatabaseError(connection);
        Lib_General::Gen_CloseConnection(connection);
        Lib_MTS::MTS_SetAbort();
        return Lib_ErrorHandling::Information();
      });
}

// The rows of a query, to be changed one by one, standing on the first or, when there is none, on a new one.
[[nodiscard]] inline std::shared_ptr<platform::database::Recordset> RowToWrite(
    const std::string& sql, const std::shared_ptr<platform::database::Connection>& connection) {
  auto rows = Lib_SQL::Sql_GetUpdateableRecordset(sql, connection, platform::database::LockType::Optimistic);
  if (rows->Eof()) rows->AddNew(std::nullopt, std::nullopt);
  return rows;
}

// The object that a caller passed; 91 when it is not set.
template <class T>
[[nodiscard]] const T& Given(const std::shared_ptr<T>& object) {
  return Required(object, "an object of class " + T::ClassName() + " is wanted", "Talvex.BudgetManager");
}

[[nodiscard]] inline std::int16_t Int16Of(const automation::Variant& value) {
  return value.IsNull() ? std::int16_t{0} : automation::ToInt16(value);
}

// A date, or Empty for Null.
[[nodiscard]] inline automation::Variant DateOrEmpty(const automation::Variant& value) {
  return value.IsNull() ? automation::Variant() : value;
}

}  // namespace talvex
