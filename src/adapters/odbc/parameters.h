// The values that a statement is run with.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <span>
#include <vector>

#include "adapters/odbc/connection.h"
#include "adapters/odbc/wide_text.h"
#include "automation/variant.h"
#include "platform/database/sql_text.h"

namespace talvex::adapters::odbc {

// How values are handed over.
enum class Binding {
  ByType,  // Numbers as numbers and dates as dates; the server converts where a column is of another type.
  AsText   // Everything as text without a type: PostgreSQL reads it as what the column is, and converts
           // nothing else by itself.
};

// Binds values to the places of one prepared statement. ODBC reads them when the statement runs, so this must
// live as long as the statement does.
class Parameters {
 public:
  explicit Parameters(Binding binding) noexcept : binding_(binding) {}

  // `places` tells for each "?" whether it is the next of the given values or a quoted text. Raises Fault
  // when there are more or fewer values than places, and for a value that no table holds.
  //
  // A place is bound anew only for a value of another kind, or a text longer than any before: SQL Server's
  // driver prepares a statement again whose parameters were bound again.
  void Bind(Connection& connection, const Handle& statement,
            std::span<const platform::database::SqlShape::Parameter> places,
            std::span<const automation::Variant> given);

 private:
  // What ODBC is told of a place, once, and reads from it at every run.
  struct Value {
    WideText text;
    SQLDOUBLE number = 0;
    SQLINTEGER whole = 0;
    SQL_TIMESTAMP_STRUCT moment{};
    SQLLEN length = 0;
    SQLSMALLINT c_type = SQL_C_WCHAR;
    SQLSMALLINT sql_type = SQL_WVARCHAR;
    SQLULEN size = 1;
    SQLSMALLINT decimals = 0;
    SQLPOINTER data = nullptr;
    SQLLEN room = 0;
    bool bound = false;
  };

  void Set(Value& value, const automation::Variant& from) const;
  static void SetText(Value& value, std::string_view text);
  static void SetWhole(Value& value, std::int32_t whole);
  static void SetNumber(Value& value, double number);
  static void SetMoment(Value& value, automation::Date date);
  // Tells what the place holds from now on; what ODBC knows of it already needs no telling.
  static void Describe(Value& value, SQLSMALLINT c_type, SQLSMALLINT sql_type, SQLULEN size,
                       SQLSMALLINT decimals, SQLPOINTER data);

  Binding binding_;
  std::vector<Value> values_;
};

}  // namespace talvex::adapters::odbc
