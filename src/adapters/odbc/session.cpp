#include "adapters/odbc/session.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/database/query_outline.h"

namespace talvex::adapters::odbc {

namespace {

using automation::SameFolded;
using automation::Variant;
using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::Result;
using platform::database::SqlShape;
using platform::database::SqlTokenizer;
using platform::database::SqlVerb;
using platform::database::TableColumn;
using platform::database::TableInfo;

bool WritesOrReadsRows(SqlVerb verb) noexcept { return verb != SqlVerb::Set && verb != SqlVerb::Other; }

// Whether the text asks for the isolation that PostgreSQL gives unless told otherwise.
bool AsksForReadCommitted(std::string_view text) {
  if (!platform::database::SetsIsolationLevel(text)) return false;
  SqlTokenizer tokens(text);
  for (int i = 0; i < 4; ++i) static_cast<void>(tokens.NextMeaning());
  static_cast<void>(tokens.NextMeaning());  // READ, of READ COMMITTED and READ UNCOMMITTED.
  const auto level = tokens.NextMeaning().text;
  return SameFolded(level, "committed") || SameFolded(level, "uncommitted");
}

// With this setting psqlodbc undoes a whole transaction when one of its statements fails, without a word, and
// what comes next would be kept on its own.
void RequireStatementRollback(const ConnectionString& connection_string) {
  const std::string protocol = connection_string.Value("Protocol");
  if (!protocol.ends_with("-1")) return;
  throw Fault(FaultKind::CannotOpen, 4060, "08001",
              "Protocol=" + protocol + " undoes a whole transaction when one statement fails: use 7.4-2");
}

}  // namespace

template <class Step>
auto OdbcSession::Noting(Step&& step) {
  try {
    return step();
  } catch (const Fault& fault) {
    failed_ = true;
    undone_ = undone_ || !OutlivesFailure(fault.Kind());
    throw;
  }
}

// Whether the transaction that is open goes on, with the failed statement alone undone.
bool OdbcSession::OutlivesFailure(FaultKind kind) {
  if (kind == FaultKind::Conflict || connection_.IsLost()) return false;
  return !in_transaction_ || savepoints_.Undo(connection_);
}

void OdbcSession::BeforeStatement() {
  if (in_transaction_) savepoints_.BeforeStatement(connection_);
}

OdbcSession::OdbcSession(std::shared_ptr<Environment> environment, const ConnectionString& connection_string,
                         std::optional<automation::Date> fixed_now, std::shared_ptr<Counters> counters)
    : connection_(std::move(environment), Savepoints::WithoutTheDrivers(connection_string)),
      server_(ServerOf(connection_.ProductName())),
      savepoints_(Savepoints::WithoutTheDrivers(connection_string)),
      counters_(std::move(counters)),
      shape_(DialectOf(server_)) {
  if (server_ == Server::PostgreSql) RequireStatementRollback(connection_string);
  if (fixed_now) FixClock(*fixed_now);
  ++counters_->opened;
}

OdbcSession::~OdbcSession() { Rollback(); }

void OdbcSession::FixClock(automation::Date now) {
  if (server_ != Server::PostgreSql) {
    throw Fault(FaultKind::CannotOpen, 4060, "08001",
                "The clock cannot be fixed: the database server has a clock of its own");
  }
  connection_.Run("SELECT set_config('talvex.now', '" + now.ToIso() + "', false)");
}

Result OdbcSession::Execute(std::string_view text, std::span<const Variant> parameters,
                            std::size_t most_rows) {
  platform::database::RequireStorableText(text);
  shape_.Read(text);
  if (IsAnswered(text)) return {};
  RequireLiveTransaction();
  const SqlVerb verb = shape_.Verb();
  if (reads_only_ && verb != SqlVerb::Select && verb != SqlVerb::Set) platform::database::RefuseToWrite();
  return Noting([&] {
    // What a transaction is to be like must be said before all else, savepoints included.
    if (verb != SqlVerb::Set || savepoints_.Any()) BeforeStatement();
    Result result = RunStatement(text, parameters, most_rows);
    if (verb != SqlVerb::Select) savepoints_.AfterChange();
    return result;
  });
}

bool OdbcSession::IsAnswered(std::string_view text) const {
  return server_ == Server::PostgreSql && shape_.Verb() == SqlVerb::Set && AsksForReadCommitted(text);
}

// A deadlock undoes the whole transaction. What came next would be kept on its own.
void OdbcSession::RequireLiveTransaction() const {
  if (!in_transaction_ || !undone_) return;
  throw Fault(FaultKind::Other, 3930, "25000",
              "The transaction was undone after an earlier failure; roll it back");
}

// SQL Server gets the text as it is written; a statement with values of its own is prepared. For PostgreSQL
// every statement on rows is prepared, its quoted texts among the values.
Result OdbcSession::RunStatement(std::string_view text, std::span<const Variant> parameters,
                                 std::size_t most_rows) {
  ++counters_->run;
  const bool on_rows = WritesOrReadsRows(shape_.Verb());
  if (server_ == Server::PostgreSql && on_rows) return RunPrepared(shape_.Text(), parameters, most_rows);
  if (server_ == Server::SqlServer && !parameters.empty()) return RunPrepared(text, parameters, most_rows);
  if (shape_.Verb() == SqlVerb::Other) {  // It may change tables.
    statements_.Clear();
    tables_.clear();
  }
  const std::string assigned = AssignedColumn(text);
  Statement statement(connection_, server_, !assigned.empty());
  return statement.RunText(assigned.empty() ? std::string(text) : ReturningInsert(server_, text, assigned),
                           most_rows);
}

Result OdbcSession::RunPrepared(std::string_view text, std::span<const Variant> parameters,
                                std::size_t most_rows) {
  std::string key(text);
  if (most_rows != platform::database::kAllRows) key += " -- " + std::to_string(most_rows);
  Statement* statement = statements_.Find(key);
  if (statement == nullptr) {
    auto fresh = Prepared(text, most_rows);
    ++counters_->prepared;
    statement = &statements_.Keep(key, std::move(fresh));
  }
  std::vector<SqlShape::Parameter> places = shape_.Parameters();
  if (server_ == Server::SqlServer) std::erase_if(places, [](const auto& place) { return !place.given; });
  try {
    return statement->Run(places, parameters, most_rows);
  } catch (const Fault& fault) {
    // A table that somebody else has changed can be why; the next call prepares the statement anew.
    if (fault.Kind() == FaultKind::Other) statements_.Drop(key);
    throw;
  }
}

std::unique_ptr<Statement> OdbcSession::Prepared(std::string_view text, std::size_t most_rows) {
  const std::string assigned = AssignedColumn(text);
  auto statement = std::make_unique<Statement>(connection_, server_, !assigned.empty());
  if (!assigned.empty()) {
    statement->Prepare(ReturningInsert(server_, text, assigned));
  } else if (server_ == Server::PostgreSql && shape_.Verb() == SqlVerb::Select) {
    const auto name = platform::database::TableOfQuery(text);
    const TableRef table = name ? FindTable(*name) : nullptr;
    statement->Prepare(OrderedQuery(text, table.get(), most_rows));
  } else {
    statement->Prepare(text);
  }
  return statement;
}

// The column to read back behind an INSERT; empty for another statement.
std::string OdbcSession::AssignedColumn(std::string_view text) {
  if (shape_.Verb() != SqlVerb::Insert) return {};
  const auto name = platform::database::InsertTarget(text);
  const TableRef table = name ? FindTable(*name) : nullptr;
  if (table == nullptr) return {};
  const auto& columns = table->info.columns;
  const auto column = std::find_if(columns.begin(), columns.end(),
                                   [](const TableColumn& candidate) { return candidate.assigned; });
  return column == columns.end() ? std::string() : column->name;
}

std::shared_ptr<const TableInfo> OdbcSession::Table(std::string_view name) {
  const TableRef table = FindTable(name);
  return table == nullptr ? nullptr : std::shared_ptr<const TableInfo>(table, &table->info);
}

OdbcSession::TableRef OdbcSession::FindTable(std::string_view name) {
  const auto known = tables_.find(name);
  if (known != tables_.end()) return known->second;
  TableRef table = Noting([&] {
    BeforeStatement();
    return ReadTable(name);
  });
  if (table != nullptr) tables_.emplace(name, table);
  return table;
}

OdbcSession::TableRef OdbcSession::ReadTable(std::string_view name) {
  constexpr std::array<SqlShape::Parameter, 1> kPlaces = {{{true, {}}}};
  Statement statement(connection_, server_, false);
  statement.Prepare(TableQuery(server_));
  const std::vector<Variant> parameters{name};
  const Result result = statement.Run(kPlaces, parameters, platform::database::kAllRows);
  if (result.rows.RowCount() == 0) return nullptr;
  auto table = std::make_shared<KnownTable>();
  table->info.name = SpelledName(server_, result.rows.TextAt(0, 0));
  for (std::size_t row = 0; row < result.rows.RowCount(); ++row) {
    const auto is_set = [&](std::size_t column) { return result.rows.Value(row, column) == Variant(1); };
    const std::string column = SpelledName(server_, result.rows.TextAt(row, 1));
    table->info.columns.push_back({column, is_set(2), is_set(3)});
    if (is_set(4)) table->nullable.push_back(column);
  }
  return table;
}

void OdbcSession::Begin() {
  if (in_transaction_) throw Fault(FaultKind::Other, 0, "25001", "A transaction is open already");
  connection_.SetAutocommit(false);
  in_transaction_ = true;
  undone_ = failed_ = false;
  savepoints_.Begin();
}

// The snapshot is taken by the first query, so one is sent along.
void OdbcSession::BeginReading() {
  Begin();
  reads_only_ = true;
  if (server_ != Server::PostgreSql) return;
  try {
    Noting([&] { connection_.Run("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ READ ONLY;SELECT 1"); });
  } catch (...) {
    Rollback();
    throw;
  }
}

void OdbcSession::Commit() {
  if (!in_transaction_) throw Fault(FaultKind::Other, 3902, "25000", "There is no transaction to commit");
  try {
    RequireLiveTransaction();
    RequireKept();
    connection_.EndTransaction(SQL_COMMIT);
    connection_.SetAutocommit(true);
    in_transaction_ = reads_only_ = false;
  } catch (...) {
    Rollback();
    throw;
  }
}

// PostgreSQL answers a COMMIT of a failed transaction by undoing it, which is no error to it. After a failure
// it is asked whether the transaction still lives.
void OdbcSession::RequireKept() {
  if (failed_ && server_ == Server::PostgreSql) connection_.Run("SELECT 1");
}

void OdbcSession::Rollback() noexcept {
  if (!in_transaction_) return;
  try {
    if (!connection_.IsLost()) {
      connection_.EndTransaction(SQL_ROLLBACK);
      connection_.SetAutocommit(true);
    }
    in_transaction_ = reads_only_ = false;
  } catch (...) {
    // The session stays in its transaction, so it is not usable; closing it undoes what is left.
    return;
  }
}

bool OdbcSession::Usable() const noexcept { return !in_transaction_ && !connection_.IsLost(); }

}  // namespace talvex::adapters::odbc
