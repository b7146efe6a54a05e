// A database that answers what a test scripts, and remembers everything that it was asked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/variant.h"
#include "platform/database/connection.h"
#include "platform/database/driver.h"
#include "platform/database/session_pool.h"
#include "platform/environment.h"

namespace talvex::test {

using Row = std::vector<automation::Variant>;

// The rows that a query gives.
struct FakeRows {
  std::vector<std::string> columns;
  std::vector<Row> rows;
};

[[nodiscard]] platform::database::RowSet MakeRowSet(const FakeRows& rows);

// A statement as it arrived.
struct SentStatement {
  std::string text;
  Row parameters;
  std::size_t most_rows = 0;
};

// What all sessions of one fake share. Queries must be scripted by their exact text; everything else counts
// as a statement that writes one row, unless it is told otherwise.
class FakeDatabase final : public platform::database::Driver,
                           public std::enable_shared_from_this<FakeDatabase> {
 public:
  [[nodiscard]] std::unique_ptr<platform::database::Session> Open(
      const platform::database::ConnectionString& connection_string) override;

  std::map<std::string, FakeRows> queries;  // By text.
  std::vector<platform::database::TableInfo> tables;
  std::int64_t affected = 1;
  std::optional<std::int64_t> identity;
  bool usable = true;

  // From now on, whatever contains `part` fails: a statement's text, "open STRING", "begin" or "commit".
  void Fail(std::string part, platform::database::Fault fault) {
    failures_.emplace_back(std::move(part), std::move(fault));
  }
  void StopFailing() { failures_.clear(); }

  // Everything that happened, in order: "open STRING", "close", "begin", "commit", "rollback", and statements
  // as texts.
  std::vector<std::string> events;
  std::vector<SentStatement> statements;
  [[nodiscard]] std::size_t Count(std::string_view event) const;
  // The statements that are no queries.
  [[nodiscard]] std::vector<SentStatement> Writes() const;
  void Forget();

 private:
  friend class FakeSession;
  void Note(const std::string& event);
  [[nodiscard]] platform::database::Result Answer(const SentStatement& statement) const;

  std::vector<std::pair<std::string, platform::database::Fault>> failures_;
};

// A fake database, and an environment for the calling thread whose connections lead to it.
class FakeWorld {
 public:
  FakeWorld();

  std::shared_ptr<FakeDatabase> database = std::make_shared<FakeDatabase>();
  std::shared_ptr<platform::database::SessionPool> sessions =
      std::make_shared<platform::database::SessionPool>();

  // An open connection.
  [[nodiscard]] std::shared_ptr<platform::database::Connection> Connect(
      const std::string& connection_string = "Driver=Fake;Database=ledger");

 private:
  std::unique_ptr<platform::Environment::ForThread> environment_;
};

// The number of the error that the call raises, and its description; 0 when it raises none.
struct Raised {
  std::int32_t number = 0;
  std::string description;
};
template <class Call>
Raised RaisedBy(Call&& call) {
  try {
    call();
  } catch (const automation::Error& error) {
    return {error.Number(), error.Description()};
  }
  return {};
}

}  // namespace talvex::test
