#include "adapters/odbc/session.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/database/query_outline.h"

namespace talvex::adapters::odbc {

namespace {

using automation::Variant;
using platform::database::ConnectionString;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::Result;
using platform::database::SqlShape;
using platform::database::SqlTokenizer;
using platform::database::SqlTokenKind;
using platform::database::SqlVerb;
using platform::database::TableColumn;
using platform::database::TableInfo;

bool WritesOrReadsRows(SqlVerb verb) noexcept { return verb != SqlVerb::Set && verb != SqlVerb::Other; }

constexpr std::string_view kReadCommitted = "read committed";

// SQL Server numbers from here on what triggers and procedures raise themselves, by THROW and RAISERROR.
constexpr std::int32_t kFirstRaised = 50000;

// The level of isolation that a text asks for, its words in small letters; empty for another text.
std::string IsolationAskedFor(std::string_view text) {
  if (!platform::database::SetsIsolationLevel(text)) return {};
  SqlTokenizer tokens(text);
  for (int i = 0; i < 4; ++i) static_cast<void>(tokens.NextMeaning());
  std::string level;
  for (auto token = tokens.NextMeaning(); token.kind == SqlTokenKind::Word; token = tokens.NextMeaning()) {
    level += (level.empty() ? "" : " ") + automation::Folded(token.text);
  }
  return level;
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
    if (!undone_ && !OutlivesFailure(fault)) {
      undone_ = true;
      undone_by_ = fault.what();
    }
    throw;
  }
}

// Whether the transaction that is open goes on, with the failed statement alone undone. SQL Server is asked:
// failures of one kind end the transaction in one place and not in another, and so do triggers as they like.
// What a trigger raises without ending it leaves open whether the change that set it off stands.
bool OdbcSession::OutlivesFailure(const Fault& fault) {
  if (fault.Kind() == FaultKind::Conflict || connection_.IsLost()) return false;
  if (!in_transaction_) return true;
  if (server_ == Server::PostgreSql) return savepoints_.Undo(connection_);
  return fault.NativeError() < kFirstRaised && transaction_.IsAlive();
}

void OdbcSession::BeforeStatement() {
  if (in_transaction_) savepoints_.BeforeStatement(connection_);
}

OdbcSession::OdbcSession(std::shared_ptr<Environment> environment, const ConnectionString& connection_string,
                         std::optional<automation::Date> fixed_now, std::shared_ptr<Counters> counters)
    : connection_(std::move(environment), Savepoints::WithoutTheDrivers(connection_string)),
      server_(ServerOf(connection_.ProductName())),
      transaction_(connection_, server_),
      savepoints_(Savepoints::WithoutTheDrivers(connection_string)),
      counters_(std::move(counters)),
      shape_(DialectOf(server_)),
      isolation_(kReadCommitted) {
  if (server_ == Server::PostgreSql) RequireStatementRollback(connection_string);
  if (fixed_now) FixClock(*fixed_now);
  transaction_.StateSettings();
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
  RequireLiveTransaction();
  const std::string isolation = IsolationAskedFor(text);
  if (HasIsolation(isolation)) return {};
  const SqlVerb verb = shape_.Verb();
  if (verb == SqlVerb::Other) platform::database::RefuseTransactionControl(text);
  if (reads_only_ && verb != SqlVerb::Select && verb != SqlVerb::Set) platform::database::RefuseToWrite();
  return Noting([&] {
    // What a transaction is to be like must be said before all else, savepoints included.
    if (verb != SqlVerb::Set || savepoints_.Any()) BeforeStatement();
    Result result = RunStatement(text, parameters, most_rows);
    if (verb != SqlVerb::Select) savepoints_.AfterChange();
    if (!isolation.empty() && server_ == Server::SqlServer) isolation_ = isolation;
    if (verb == SqlVerb::Other) RequireUnended();
    return result;
  });
}

// A procedure, or a block of statements, may have ended the transaction without failing.
void OdbcSession::RequireUnended() {
  if (!in_transaction_ || server_ != Server::SqlServer || transaction_.IsAlive()) return;
  throw Fault(FaultKind::Other, 3930, "25000", "The statement has ended the transaction that it ran in");
}

// Whether the session has the level already. On SQL Server it holds until another one is set; on PostgreSQL
// for one transaction, and what is less than READ COMMITTED is the same there.
bool OdbcSession::HasIsolation(std::string_view level) const {
  if (level.empty()) return false;
  return level == isolation_ || (server_ == Server::PostgreSql && level == "read uncommitted");
}

// Once the server has undone a transaction, what came next would be kept on its own.
void OdbcSession::RequireLiveTransaction() const {
  if (!in_transaction_ || !undone_) return;
  throw Fault(
      FaultKind::Other, 3930, "25000",
      "The transaction was undone after an earlier failure; roll it back. The failure was: " + undone_by_);
}

// SQL Server gets quoted texts as they are written; a statement with values of its own is prepared. For
// PostgreSQL every statement on rows is prepared, its quoted texts among the values.
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
  const Sent sent = AsSent(text, most_rows);
  Statement statement(connection_, server_, sent.returns_identity);
  return statement.RunText(sent.text, most_rows);
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
  const Sent sent = AsSent(text, most_rows);
  auto statement = std::make_unique<Statement>(connection_, server_, sent.returns_identity);
  statement->Prepare(sent.text);
  return statement;
}

// What the server gets for a text: an INSERT returns the number that the database assigns, and the rows of a
// query come in the same order every time.
OdbcSession::Sent OdbcSession::AsSent(std::string_view text, std::size_t most_rows) {
  const std::string assigned = AssignedColumn(text);
  if (!assigned.empty()) return {ReturningInsert(server_, text, assigned), true};
  if (shape_.Verb() != SqlVerb::Select) return {std::string(text), false};
  const auto name = platform::database::TableOfQuery(text);
  const TableRef table = name ? FindTable(*name) : nullptr;
  return {OrderedQuery(server_, text, table.get(), most_rows), false};
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
  const TableRef table = Noting([&] { return FindTable(name); });
  return table == nullptr ? nullptr : std::shared_ptr<const TableInfo>(table, &table->info);
}

OdbcSession::TableRef OdbcSession::FindTable(std::string_view name) {
  const auto known = tables_.find(name);
  if (known != tables_.end()) return known->second;
  RequireLiveTransaction();
  BeforeStatement();
  TableRef table = ReadTable(name);
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
  transaction_.Begin();
  isolation_ = kReadCommitted;
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
    transaction_.Commit();
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
    if (!connection_.IsLost()) transaction_.Rollback();
    in_transaction_ = reads_only_ = false;
  } catch (...) {
    // The session stays in its transaction, so it is not usable; closing it undoes what is left.
    return;
  }
}

bool OdbcSession::Usable() const noexcept { return !in_transaction_ && !connection_.IsLost(); }

}  // namespace talvex::adapters::odbc
