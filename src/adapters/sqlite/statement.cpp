#include "adapters/sqlite/statement.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "automation/text.h"

namespace talvex::adapters::sqlite {

namespace {

using automation::Date;
using automation::Kind;
using automation::SameFolded;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::Result;
using platform::database::RowSet;

[[noreturn]] void RefuseValue(const std::string& reason) {
  throw Fault(FaultKind::ValueRefused, 8152, "22001", reason);
}

[[noreturn]] void RefuseCall(const std::string& reason) { throw Fault(FaultKind::Other, 0, "07002", reason); }

// Makes the statement ready for its next run, whatever became of this one, and lets go of the values bound to
// it.
class ResetAtEnd {
 public:
  explicit ResetAtEnd(sqlite3_stmt* handle) noexcept : handle_(handle) {}
  ~ResetAtEnd() {
    sqlite3_reset(handle_);
    sqlite3_clear_bindings(handle_);
  }
  ResetAtEnd(const ResetAtEnd&) = delete;
  ResetAtEnd& operator=(const ResetAtEnd&) = delete;

 private:
  sqlite3_stmt* handle_;
};

}  // namespace

Statement::Statement(Database& database, std::string_view text, bool gives_identity)
    : database_(database), gives_identity_(gives_identity) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    RefuseValue("The statement is too long");
  sqlite3_stmt* handle = nullptr;
  const char* rest = nullptr;
  const auto length = static_cast<int>(text.size());
  database_.Check(
      sqlite3_prepare_v3(database_.Handle(), text.data(), length, SQLITE_PREPARE_PERSISTENT, &handle, &rest));
  handle_.reset(handle);
  // The text was split already; where SQLite sees another end than we did, nothing must be run.
  if (handle == nullptr || rest != text.data() + text.size()) {
    throw Fault(FaultKind::Other, 102, "42000", "The text is not one statement");
  }
  writes_ = sqlite3_stmt_readonly(handle) == 0;
  Describe();
}

void Statement::Describe() {
  names_.clear();
  are_dates_.clear();
  const int count = sqlite3_column_count(handle_.get());
  for (int column = 0; column < count; ++column) {
    names_.emplace_back(sqlite3_column_name(handle_.get(), column));
    const char* const declared = sqlite3_column_decltype(handle_.get(), column);
    are_dates_.push_back(declared != nullptr && SameFolded(declared, "DATETIME"));
  }
}

void Statement::DescribeAgainWhenChanged() {
  const int preparations = sqlite3_stmt_status(handle_.get(), SQLITE_STMTSTATUS_REPREPARE, 0);
  if (preparations == preparations_) return;
  preparations_ = preparations;
  Describe();
}

Result Statement::Run(const Parameters& parameters, std::span<const Variant> given, std::size_t most_rows) {
  const ResetAtEnd reset(handle_.get());
  Bind(parameters, given);
  bool has_row = Step();
  DescribeAgainWhenChanged();
  Result result;
  result.rows = RowSet(names_);
  for (std::size_t count = 0; has_row && count < most_rows; ++count) {
    AppendRow(result.rows);
    has_row = Step();
  }
  result.complete = !has_row;
  return result;
}

bool Statement::Step() { return database_.Check(sqlite3_step(handle_.get())) == SQLITE_ROW; }

void Statement::Bind(const Parameters& parameters, std::span<const Variant> given) {
  if (sqlite3_bind_parameter_count(handle_.get()) != static_cast<int>(parameters.size())) {
    RefuseCall("A parameter of a statement is written \"?\" and in no other way");
  }
  const auto wanted =
      std::count_if(parameters.begin(), parameters.end(), [](const auto& one) { return one.given; });
  if (static_cast<std::size_t>(wanted) != given.size()) {
    RefuseCall("The statement takes " + std::to_string(wanted) + " parameters, but was given " +
               std::to_string(given.size()));
  }
  int place = 0;
  auto next = given.begin();
  for (const auto& parameter : parameters) {
    ++place;
    if (parameter.given) {
      BindValue(place, *next++);
    } else {
      BindText(place, parameter.literal);
    }
  }
}

void Statement::BindValue(int place, const Variant& value) {
  sqlite3_stmt* const handle = handle_.get();
  switch (value.Type()) {
    case Kind::Empty:
    case Kind::Null:
      database_.Check(sqlite3_bind_null(handle, place));
      return;
    case Kind::Boolean:
      database_.Check(sqlite3_bind_int(handle, place, value.As<bool>() ? 1 : 0));
      return;
    case Kind::Int16:
      database_.Check(sqlite3_bind_int(handle, place, value.As<std::int16_t>()));
      return;
    case Kind::Int32:
      database_.Check(sqlite3_bind_int(handle, place, value.As<std::int32_t>()));
      return;
    case Kind::Double:
      return BindNumber(place, value.As<double>());
    case Kind::Currency:
      return BindNumber(place, value.As<automation::Currency>().ToDouble());
    case Kind::String:
      platform::database::RequireStorableText(value.As<std::string>());
      return BindText(place, value.As<std::string>());
    case Kind::Date: {
      const std::string text = value.As<Date>().ToIso();
      const auto length = static_cast<int>(text.size());
      database_.Check(sqlite3_bind_text(handle, place, text.data(), length, SQLITE_TRANSIENT));
      return;
    }
    default:
      RefuseValue("A value of kind " + std::string(automation::KindName(value.Type())) + " cannot be stored");
  }
}

// SQLite would make Null of what is no number.
void Statement::BindNumber(int place, double number) {
  if (!std::isfinite(number)) RefuseValue("A number that is not finite cannot be stored");
  database_.Check(sqlite3_bind_double(handle_.get(), place, number));
}

// The text stays where it is until the run is over, so SQLite need not copy it; a null pointer would bind
// Null.
void Statement::BindText(int place, std::string_view text) {
  const char* const data = text.empty() ? "" : text.data();
  database_.Check(sqlite3_bind_text64(handle_.get(), place, data, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::AppendRow(RowSet& rows) const {
  const auto count = static_cast<int>(names_.size());
  for (int column = 0; column < count; ++column) AppendValue(rows, column);
}

void Statement::AppendValue(RowSet& rows, int column) const {
  switch (sqlite3_column_type(handle_.get(), column)) {
    case SQLITE_NULL:
      rows.Append(automation::kNull);
      return;
    case SQLITE_FLOAT:
      rows.Append(sqlite3_column_double(handle_.get(), column));
      return;
    case SQLITE_INTEGER: {
      const std::int64_t whole = sqlite3_column_int64(handle_.get(), column);
      const auto narrow = static_cast<std::int32_t>(whole);
      if (narrow == whole) return rows.Append(narrow);
      return rows.Append(static_cast<double>(whole));
    }
    case SQLITE_TEXT: {
      const std::string_view text = TextAt(column);
      const bool is_date = are_dates_[static_cast<std::size_t>(column)];
      if (const auto date = is_date ? Date::ParseIso(text) : std::nullopt) return rows.Append(*date);
      return rows.Append(text);
    }
    default:
      RefuseValue("The column " + names_[static_cast<std::size_t>(column)] +
                  " holds bytes, which are not read");
  }
}

std::string_view Statement::TextAt(int column) const noexcept {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(handle_.get(), column));
  const int length = sqlite3_column_bytes(handle_.get(), column);
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace talvex::adapters::sqlite
