// A session with a database server.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "adapters/odbc/connection.h"
#include "adapters/odbc/dialect.h"
#include "adapters/odbc/savepoints.h"
#include "adapters/odbc/server_transaction.h"
#include "adapters/odbc/statement.h"
#include "automation/date.h"
#include "automation/text.h"
#include "platform/database/driver.h"
#include "platform/database/sql_text.h"
#include "platform/database/statement_cache.h"

namespace talvex::adapters::odbc {

// What all sessions of a driver have done so far.
struct Counters {
  std::atomic<std::uint64_t> opened{0};
  std::atomic<std::uint64_t> prepared{0};
  std::atomic<std::uint64_t> run{0};
};

class OdbcSession final : public platform::database::Session {
 public:
  // `fixed_now` is what GETDATE() is to say, where the server can be told.
  OdbcSession(std::shared_ptr<Environment> environment,
              const platform::database::ConnectionString& connection_string,
              std::optional<automation::Date> fixed_now, std::shared_ptr<Counters> counters);
  ~OdbcSession() override;
  OdbcSession(const OdbcSession&) = delete;
  OdbcSession& operator=(const OdbcSession&) = delete;

  platform::database::Result Execute(std::string_view text, std::span<const automation::Variant> parameters,
                                     std::size_t most_rows) override;
  void Begin() override;
  // On PostgreSQL one snapshot of the database. Any other server reads at READ COMMITTED, each statement by
  // itself; that it keeps no writer waiting is up to the settings of the database.
  void BeginReading() override;
  void Commit() override;
  void Rollback() noexcept override;
  [[nodiscard]] std::shared_ptr<const platform::database::TableInfo> Table(std::string_view name) override;
  [[nodiscard]] bool Usable() const noexcept override;

 private:
  using TableRef = std::shared_ptr<const KnownTable>;

  // A text as the server gets it.
  struct Sent {
    std::string text;
    bool returns_identity;
  };

  void FixClock(automation::Date now);
  void RequireLiveTransaction() const;
  void RequireUnended();
  template <class Step>
  auto Noting(Step&& step);
  void BeforeStatement();
  [[nodiscard]] bool OutlivesFailure(const platform::database::Fault& fault);
  [[nodiscard]] bool HasIsolation(std::string_view level) const;
  [[nodiscard]] platform::database::Result RunStatement(std::string_view text,
                                                        std::span<const automation::Variant> parameters,
                                                        std::size_t most_rows);
  [[nodiscard]] platform::database::Result RunPrepared(std::string_view text,
                                                       std::span<const automation::Variant> parameters,
                                                       std::size_t most_rows);
  [[nodiscard]] std::unique_ptr<Statement> Prepared(std::string_view text, std::size_t most_rows);
  [[nodiscard]] Sent AsSent(std::string_view text, std::size_t most_rows);
  [[nodiscard]] std::string AssignedColumn(std::string_view text);
  [[nodiscard]] TableRef FindTable(std::string_view name);
  [[nodiscard]] TableRef ReadTable(std::string_view name);
  void RequireKept();

  // The connection is closed last, when no statement is left that belongs to it.
  Connection connection_;
  Server server_;
  ServerTransaction transaction_;
  Savepoints savepoints_;
  std::shared_ptr<Counters> counters_;
  platform::database::SqlShape shape_;
  platform::database::StatementCache<Statement> statements_;
  std::unordered_map<std::string, TableRef, automation::FoldedHash, automation::FoldedEqual> tables_;
  std::string isolation_;  // The level that the session has, in small letters.
  bool in_transaction_ = false;
  bool reads_only_ = false;  // Whether the transaction that is open refuses to write.
  bool undone_ = false;      // The server has given up the transaction that is open, or nobody knows.
  std::string undone_by_;    // What the failure said that did so.
  bool failed_ = false;      // A statement of the transaction that is open has failed.
};

}  // namespace talvex::adapters::odbc
