// A statement, and the rows that come of it.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/odbc/connection.h"
#include "adapters/odbc/dialect.h"
#include "adapters/odbc/parameters.h"
#include "adapters/odbc/wide_text.h"
#include "automation/variant.h"
#include "platform/database/driver.h"
#include "platform/database/sql_text.h"

namespace talvex::adapters::odbc {

// A statement that may run any number of times. Must not outlive its connection. Everything raises Fault.
class Statement {
 public:
  using Places = std::span<const platform::database::SqlShape::Parameter>;

  // `returns_identity` says that the statement's one row is the number given to an added row.
  Statement(Connection& connection, Server server, bool returns_identity);

  void Prepare(std::string_view text);

  // Runs the prepared statement with the values. All results are read to their end, the rows of the first up
  // to `most_rows`, and the statement is closed when this returns or raises.
  [[nodiscard]] platform::database::Result Run(Places places, std::span<const automation::Variant> given,
                                               std::size_t most_rows);

  // The same with a text that takes no values and was not prepared.
  [[nodiscard]] platform::database::Result RunText(std::string_view text, std::size_t most_rows);

 private:
  enum class Reading { Text, Whole, Real, Moment, Bit };

  struct Column {
    std::string name;
    Reading reading;
  };

  [[nodiscard]] platform::database::Result ReadResults(SQLRETURN code, std::size_t most_rows);
  void ReadRows(platform::database::Result& result, SQLSMALLINT count, std::size_t most_rows);
  [[nodiscard]] std::vector<Column> Describe(SQLSMALLINT count);
  void AppendValue(platform::database::RowSet& rows, SQLUSMALLINT number, const Column& column);
  void AppendText(platform::database::RowSet& rows, SQLUSMALLINT number);
  // Reads a value of a fixed size; false for Null.
  template <class T>
  [[nodiscard]] bool Get(SQLUSMALLINT number, SQLSMALLINT c_type, T& value);
  void TakeIdentity(platform::database::Result& result) const;

  Connection& connection_;
  Handle handle_;
  Parameters parameters_;
  Server server_;
  bool returns_identity_;
  std::vector<Column> columns_;  // Of the rows, once they were read.
  WideText buffer_;
  std::string text_;
};

}  // namespace talvex::adapters::odbc
