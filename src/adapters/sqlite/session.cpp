#include "adapters/sqlite/session.h"

#include <algorithm>
#include <utility>

namespace talvex::adapters::sqlite {

namespace {

using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::Result;
using platform::database::SqlDialect;
using platform::database::SqlVerb;
using platform::database::TableColumn;
using platform::database::TableInfo;

constexpr SqlDialect kDialect{.delete_takes_from = true, .lacks_national_text = true};

// A table that has a primary key but no index for it is kept in the order of that key, an integer which
// SQLite assigns when none is given.
constexpr std::string_view kTableText =
    "SELECT l.name, c.name, c.pk > 0, c.pk > 0 AND NOT EXISTS "
    "(SELECT 1 FROM pragma_index_list(l.name) WHERE origin = 'pk') "
    "FROM pragma_table_list(?) l, pragma_table_xinfo(l.name) c "
    "WHERE l.schema = 'main' AND l.type = 'table' AND c.hidden <> 1 ORDER BY c.cid";

bool WritesRows(SqlVerb verb) noexcept { return verb != SqlVerb::Set && verb != SqlVerb::Other; }

}  // namespace

SqliteSession::SqliteSession(const std::string& path, int busy_timeout, NowFunction now,
                             std::shared_ptr<StatementCounters> counters)
    : database_(path, busy_timeout),
      clock_(database_, std::move(now)),
      counters_(std::move(counters)),
      shape_(kDialect) {}

Result SqliteSession::Execute(std::string_view text, std::span<const Variant> parameters,
                              std::size_t most_rows) {
  platform::database::RequireStorableText(text);
  shape_.Read(text);
  RequireLiveTransaction();
  if (shape_.Verb() == SqlVerb::Other) platform::database::RefuseTransactionControl(text);
  // SQLite isolates its transactions from one another completely; there is nothing to set.
  if (shape_.Verb() == SqlVerb::Set && platform::database::SetsIsolationLevel(text)) return {};
  if (reads_only_ && shape_.Verb() != SqlVerb::Select) platform::database::RefuseToWrite();
  return RunStatement(parameters, most_rows);
}

// After some failures SQLite undoes the whole transaction by itself. What came next would be kept on its own.
void SqliteSession::RequireLiveTransaction() const {
  if (!in_transaction_ || database_.InTransaction()) return;
  throw Fault(FaultKind::Other, 3930, "25000",
              "The transaction was undone after an earlier failure; roll it back");
}

Result SqliteSession::RunStatement(std::span<const Variant> parameters, std::size_t most_rows) {
  Statement& statement = StatementForShape();
  clock_.StartStatement();
  ++counters_->run;
  Result result = statement.Run(shape_.Parameters(), parameters, most_rows);
  if (!statement.Writes()) return result;
  if (WritesRows(shape_.Verb())) {
    CountWritten(statement, result);
  } else {
    changed_tables_ = true;
    ForgetTables();
  }
  return result;
}

void SqliteSession::CountWritten(const Statement& statement, Result& result) const {
  result.affected = sqlite3_changes64(database_.Handle());
  if (result.affected > 0 && statement.GivesIdentity()) {
    result.identity = sqlite3_last_insert_rowid(database_.Handle());
  }
}

Statement& SqliteSession::StatementForShape() {
  if (Statement* const known = statements_.Find(shape_.Text())) return *known;
  auto fresh = std::make_unique<Statement>(database_, shape_.Text(), GivesIdentity());
  ++counters_->compiled;
  return statements_.Keep(shape_.Text(), std::move(fresh));
}

bool SqliteSession::GivesIdentity() {
  const auto name = platform::database::InsertTarget(shape_.Text());
  const TableRef table = name ? Table(*name) : nullptr;
  return table != nullptr && std::any_of(table->columns.begin(), table->columns.end(),
                                         [](const TableColumn& column) { return column.assigned; });
}

std::shared_ptr<const TableInfo> SqliteSession::Table(std::string_view name) {
  const auto known = tables_.find(name);
  if (known != tables_.end()) return known->second;
  TableRef table = ReadTable(name);
  if (table != nullptr) tables_.emplace(name, table);
  return table;
}

SqliteSession::TableRef SqliteSession::ReadTable(std::string_view name) {
  Statement statement(database_, kTableText, false);
  const std::vector<Variant> parameters{name};
  const Result result = statement.Run({{true, {}}}, parameters, platform::database::kAllRows);
  if (result.rows.RowCount() == 0) return nullptr;
  auto table = std::make_shared<TableInfo>();
  table->name = result.rows.TextAt(0, 0);
  for (std::size_t row = 0; row < result.rows.RowCount(); ++row) {
    const auto is_set = [&](std::size_t column) { return result.rows.Value(row, column) == Variant(1); };
    table->columns.push_back({std::string(result.rows.TextAt(row, 1)), is_set(2), is_set(3)});
  }
  return table;
}

void SqliteSession::ForgetTables() noexcept {
  statements_.Clear();
  tables_.clear();
}

// The lock for writing is taken at once: a transaction that reads first and then finds another writer must
// give up.
void SqliteSession::Begin() { Begin("BEGIN IMMEDIATE"); }

// A transaction sees the database as it was at its first read, and begins without one.
void SqliteSession::BeginReading() {
  Begin("BEGIN DEFERRED; SELECT 1 FROM sqlite_schema LIMIT 1");
  reads_only_ = true;
}

void SqliteSession::Begin(const char* how) {
  if (in_transaction_ || database_.InTransaction()) {
    throw Fault(FaultKind::Other, 0, "25001", "A transaction is open already");
  }
  try {
    database_.Run(how);
  } catch (...) {
    Rollback();
    throw;
  }
  in_transaction_ = true;
}

void SqliteSession::Commit() {
  if (!in_transaction_) throw Fault(FaultKind::Other, 3902, "25000", "There is no transaction to commit");
  try {
    RequireLiveTransaction();
    database_.Run("COMMIT");
    in_transaction_ = reads_only_ = false;
  } catch (...) {
    Rollback();
    throw;
  }
}

void SqliteSession::Rollback() noexcept {
  if (database_.InTransaction()) sqlite3_exec(database_.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  in_transaction_ = database_.InTransaction();
  reads_only_ = reads_only_ && in_transaction_;
  // Tables that the transaction made or changed are again what they were.
  if (std::exchange(changed_tables_, false)) ForgetTables();
}

bool SqliteSession::Usable() const noexcept {
  return !database_.IsDamaged() && !in_transaction_ && !database_.InTransaction();
}

}  // namespace talvex::adapters::sqlite
