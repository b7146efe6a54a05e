// The seam behind which databases differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"
#include "platform/database/connection_string.h"
#include "platform/database/fault.h"
#include "platform/database/row_set.h"

namespace talvex::platform::database {

struct TableColumn {
  std::string name;
  bool key = false;       // Part of the primary key.
  bool assigned = false;  // The database gives it a value when a row is inserted.
};

// A table as the catalogue knows it.
struct TableInfo {
  std::string name;
  std::vector<TableColumn> columns;
};

inline constexpr std::size_t kAllRows = std::numeric_limits<std::size_t>::max();

// What a statement gave: rows for a query (their columns are empty for any other statement), else a count.
struct Result {
  RowSet rows;
  std::int64_t affected = 0;
  bool complete = true;                  // False when there are more rows than were asked for.
  std::optional<std::int64_t> identity;  // The number that an INSERT was given for its assigned column.
};

// One open session with a database, used by one thread at a time. Everything raises Fault.
class Session {
 public:
  virtual ~Session() = default;

  // Runs one statement in the SQL Server dialect; "?" takes the parameters in order. Reads `most_rows` rows
  // at most. The statement is closed before this returns. Text after a first complete statement is refused,
  // nothing is run then.
  virtual Result Execute(std::string_view text, std::span<const automation::Variant> parameters,
                         std::size_t most_rows) = 0;

  // A transaction that may write, or one that only reads: it sees what the database held when it began,
  // whatever others keep meanwhile, and nobody who writes waits for it. Where a server cannot give that, it
  // gives the nearest that it can, and its driver says what. A reading one refuses every statement but
  // queries (RefuseToWrite).
  virtual void Begin() = 0;
  virtual void BeginReading() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() noexcept = 0;

  // The table of that name, without regard to case; null when there is none.
  [[nodiscard]] virtual std::shared_ptr<const TableInfo> Table(std::string_view name) = 0;

  // Whether the session can serve again; a pool drops one that cannot.
  [[nodiscard]] virtual bool Usable() const noexcept = 0;
};

class Driver {
 public:
  virtual ~Driver() = default;
  [[nodiscard]] virtual std::unique_ptr<Session> Open(const ConnectionString& connection_string) = 0;
};

}  // namespace talvex::platform::database
