// A session with an SQLite database.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/statement_cache.h"
#include "adapters/sqlite/statement_clock.h"
#include "automation/text.h"
#include "platform/database/driver.h"
#include "platform/database/sql_text.h"

namespace talvex::adapters::sqlite {

// What all sessions of a driver have done so far.
struct StatementCounters {
  std::atomic<std::uint64_t> compiled{0};
  std::atomic<std::uint64_t> run{0};
};

class SqliteSession final : public platform::database::Session {
 public:
  SqliteSession(const std::string& path, int busy_timeout, NowFunction now,
                std::shared_ptr<StatementCounters> counters);

  platform::database::Result Execute(std::string_view text, std::span<const automation::Variant> parameters,
                                     std::size_t most_rows) override;
  void Begin() override;
  void BeginReading() override;
  void Commit() override;
  void Rollback() noexcept override;
  [[nodiscard]] std::shared_ptr<const platform::database::TableInfo> Table(std::string_view name) override;
  [[nodiscard]] bool Usable() const noexcept override;

 private:
  using TableRef = std::shared_ptr<const platform::database::TableInfo>;

  void Begin(const char* how);
  void RequireLiveTransaction() const;
  [[nodiscard]] Statement& StatementForShape();
  [[nodiscard]] bool GivesIdentity();
  [[nodiscard]] platform::database::Result RunStatement(std::span<const automation::Variant> parameters,
                                                        std::size_t most_rows);
  void CountWritten(const Statement& statement, platform::database::Result& result) const;
  [[nodiscard]] TableRef ReadTable(std::string_view name);
  void ForgetTables() noexcept;

  // The database is closed last, when no statement is left that belongs to it.
  Database database_;
  StatementClock clock_;
  std::shared_ptr<StatementCounters> counters_;
  platform::database::SqlShape shape_;
  StatementCache statements_;
  std::unordered_map<std::string, TableRef, automation::FoldedHash, automation::FoldedEqual> tables_;
  bool in_transaction_ = false;
  bool reads_only_ = false;      // Whether the transaction that is open refuses to write.
  bool changed_tables_ = false;  // Whether tables were made or changed since the last rollback.
};

}  // namespace talvex::adapters::sqlite
