#include "adapters/odbc/statement.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "automation/conversions.h"

namespace talvex::adapters::odbc {

namespace {

using automation::Date;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::Result;
using platform::database::RowSet;

constexpr std::size_t kBufferUnits = 4096;

// Ends the rows of a statement, whatever became of them, so that the session can run the next.
class CloseAtEnd {
 public:
  explicit CloseAtEnd(const Handle& statement) noexcept : statement_(statement) {}
  ~CloseAtEnd() { SQLFreeStmt(statement_.Get(), SQL_CLOSE); }
  CloseAtEnd(const CloseAtEnd&) = delete;
  CloseAtEnd& operator=(const CloseAtEnd&) = delete;

 private:
  const Handle& statement_;
};

}  // namespace

Statement::Statement(Connection& connection, Server server, bool returns_identity)
    : connection_(connection),
      handle_(SQL_HANDLE_STMT, connection.Get()),
      parameters_(server == Server::PostgreSql ? Binding::AsText : Binding::ByType),
      server_(server),
      returns_identity_(returns_identity),
      buffer_(kBufferUnits) {}

void Statement::Prepare(std::string_view text) {
  WideText wide = ToWide(text);
  connection_.Check(SQLPrepareW(handle_.Get(), wide.data(), static_cast<SQLINTEGER>(wide.size())), handle_);
}

Result Statement::Run(Places places, std::span<const Variant> given, std::size_t most_rows) {
  const CloseAtEnd close(handle_);
  parameters_.Bind(connection_, handle_, places, given);
  return ReadResults(connection_.Check(SQLExecute(handle_.Get()), handle_), most_rows);
}

Result Statement::RunText(std::string_view text, std::size_t most_rows) {
  const CloseAtEnd close(handle_);
  WideText wide = ToWide(text);
  const auto length = static_cast<SQLINTEGER>(wide.size());
  const SQLRETURN code = SQLExecDirectW(handle_.Get(), wide.data(), length);
  return ReadResults(connection_.Check(code, handle_), most_rows);
}

// A statement that affects no row may answer SQL_NO_DATA, which is no failure. What a trigger counts or
// selects comes before what the statement itself does, so the last count is the statement's, and so are the
// last rows of an INSERT that returns its number; a query has its rows first.
Result Statement::ReadResults(SQLRETURN code, std::size_t most_rows) {
  Result result;
  bool has_rows = false;
  for (; code != SQL_NO_DATA; code = connection_.Check(SQLMoreResults(handle_.Get()), handle_)) {
    SQLSMALLINT columns = 0;
    connection_.Check(SQLNumResultCols(handle_.Get(), &columns), handle_);
    if (columns == 0) {
      SQLLEN count = 0;
      connection_.Check(SQLRowCount(handle_.Get(), &count), handle_);
      if (count >= 0) result.affected = count;
    } else if (!has_rows || returns_identity_) {
      has_rows = true;
      ReadRows(result, columns, most_rows);
    }
  }
  if (returns_identity_) TakeIdentity(result);
  return result;
}

// What the columns are does not change from run to run: a server refuses a prepared statement whose table has
// changed, and a refused statement is not kept.
void Statement::ReadRows(Result& result, SQLSMALLINT count, std::size_t most_rows) {
  if (columns_.size() != static_cast<std::size_t>(count)) columns_ = Describe(count);
  std::vector<std::string> names;
  for (const Column& column : columns_) names.push_back(column.name);
  result.rows = RowSet(std::move(names));
  for (std::size_t row = 0; connection_.Check(SQLFetch(handle_.Get()), handle_) != SQL_NO_DATA; ++row) {
    if (row == most_rows) {
      result.complete = false;
      return;
    }
    SQLUSMALLINT number = 0;
    for (const Column& column : columns_) AppendValue(result.rows, ++number, column);
  }
}

std::vector<Statement::Column> Statement::Describe(SQLSMALLINT count) {
  std::vector<Column> columns;
  for (SQLSMALLINT number = 1; number <= count; ++number) {
    std::array<SQLWCHAR, 256> name{};
    SQLSMALLINT length = 0;
    SQLSMALLINT type = 0;
    SQLULEN size = 0;
    SQLSMALLINT decimals = 0;
    SQLSMALLINT nullable = 0;
    connection_.Check(
        SQLDescribeColW(handle_.Get(), static_cast<SQLUSMALLINT>(number), name.data(),
                        static_cast<SQLSMALLINT>(name.size()), &length, &type, &size, &decimals, &nullable),
        handle_);
    const std::size_t units = std::min(static_cast<std::size_t>(length), name.size() - 1);
    const std::string narrow = ToNarrow(std::span(name).first(units));
    columns.push_back({SpelledName(server_, narrow), Reading::Text});
    switch (type) {
      case SQL_BIT:
        columns.back().reading = Reading::Bit;
        break;
      case SQL_TINYINT:
      case SQL_SMALLINT:
      case SQL_INTEGER:
      case SQL_BIGINT:
        columns.back().reading = Reading::Whole;
        break;
      case SQL_REAL:
      case SQL_FLOAT:
      case SQL_DOUBLE:
      case SQL_NUMERIC:
      case SQL_DECIMAL:
        columns.back().reading = Reading::Real;
        break;
      case SQL_TYPE_DATE:
      case SQL_TYPE_TIMESTAMP:
        columns.back().reading = Reading::Moment;
        break;
      default:
        break;
    }
  }
  return columns;
}

template <class T>
bool Statement::Get(SQLUSMALLINT number, SQLSMALLINT c_type, T& value) {
  SQLLEN length = 0;
  connection_.Check(SQLGetData(handle_.Get(), number, c_type, &value, sizeof value, &length), handle_);
  return length != SQL_NULL_DATA;
}

void Statement::AppendValue(RowSet& rows, SQLUSMALLINT number, const Column& column) {
  switch (column.reading) {
    case Reading::Text:
      return AppendText(rows, number);
    case Reading::Bit: {
      SQLCHAR bit = 0;
      if (!Get(number, SQL_C_BIT, bit)) break;
      return rows.Append(Variant(bit != 0));
    }
    case Reading::Whole: {
      SQLBIGINT whole = 0;
      if (!Get(number, SQL_C_SBIGINT, whole)) break;
      const auto narrow = static_cast<std::int32_t>(whole);
      if (narrow == whole) return rows.Append(narrow);
      return rows.Append(static_cast<double>(whole));
    }
    case Reading::Real: {
      SQLDOUBLE real = 0;
      if (!Get(number, SQL_C_DOUBLE, real)) break;
      return rows.Append(real);
    }
    case Reading::Moment: {
      SQL_TIMESTAMP_STRUCT m{};
      if (!Get(number, SQL_C_TYPE_TIMESTAMP, m)) break;
      const auto date = Date::TryCivil(m.year, m.month, m.day, m.hour, m.minute, m.second);
      if (date) return rows.Append(*date, static_cast<std::uint32_t>(m.fraction));
      throw Fault(FaultKind::ValueRefused, 8152, "22007", "The column " + column.name + " holds no date");
    }
  }
  rows.Append(automation::kNull);
}

// A long text comes in pieces; a pair of halves may be cut in two, so all pieces are gathered first.
void Statement::AppendText(RowSet& rows, SQLUSMALLINT number) {
  std::size_t filled = 0;
  for (;;) {
    const std::size_t room = (buffer_.size() - filled) * sizeof(SQLWCHAR);
    SQLLEN length = 0;
    const SQLRETURN code =
        connection_.Check(SQLGetData(handle_.Get(), number, SQL_C_WCHAR, buffer_.data() + filled,
                                     static_cast<SQLLEN>(room), &length),
                          handle_);
    if (code == SQL_NO_DATA) break;
    if (length == SQL_NULL_DATA) return rows.Append(automation::kNull);
    const bool cut = length == SQL_NO_TOTAL || static_cast<std::size_t>(length) + sizeof(SQLWCHAR) > room;
    // A piece that was cut is followed by the zero that ends every piece.
    filled += cut ? room / sizeof(SQLWCHAR) - 1 : static_cast<std::size_t>(length) / sizeof(SQLWCHAR);
    if (!cut) break;
    buffer_.resize(2 * buffer_.size());
  }
  text_.clear();
  AppendNarrow(text_, std::span(buffer_).first(filled));
  rows.Append(std::string_view(text_));
}

// The row that an INSERT returned is no row of a query.
void Statement::TakeIdentity(Result& result) const {
  const std::size_t added = result.rows.RowCount();
  result.affected = static_cast<std::int64_t>(added);
  if (added > 0) {
    const Variant number = result.rows.Value(added - 1, 0);
    if (!number.IsNull()) result.identity = automation::ToInt32(number);
  }
  result.rows = RowSet();
}

}  // namespace talvex::adapters::odbc
