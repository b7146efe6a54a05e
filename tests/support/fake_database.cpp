#include "support/fake_database.h"

#include <algorithm>

#include "automation/text.h"

namespace talvex::test {

namespace db = platform::database;

class FakeSession final : public db::Session {
 public:
  explicit FakeSession(std::shared_ptr<FakeDatabase> database) : database_(std::move(database)) {}
  ~FakeSession() override { database_->events.emplace_back("close"); }

  db::Result Execute(std::string_view text, std::span<const automation::Variant> parameters,
                     std::size_t most_rows) override {
    SentStatement statement{std::string(text), {parameters.begin(), parameters.end()}, most_rows};
    database_->statements.push_back(statement);
    database_->Note(statement.text);
    return database_->Answer(statement);
  }
  void Begin() override { database_->Note("begin"); }
  void BeginReading() override { database_->Note("begin reading"); }
  void Commit() override { database_->Note("commit"); }
  void Rollback() noexcept override { database_->events.emplace_back("rollback"); }

  std::shared_ptr<const db::TableInfo> Table(std::string_view name) override {
    for (const db::TableInfo& table : database_->tables) {
      if (automation::SameFolded(table.name, name)) return std::make_shared<db::TableInfo>(table);
    }
    return nullptr;
  }
  bool Usable() const noexcept override { return database_->usable; }

 private:
  std::shared_ptr<FakeDatabase> database_;
};

db::RowSet MakeRowSet(const FakeRows& rows) {
  db::RowSet set(rows.columns);
  for (const Row& row : rows.rows) {
    for (const automation::Variant& value : row) set.Append(value);
  }
  return set;
}

std::unique_ptr<db::Session> FakeDatabase::Open(const db::ConnectionString& connection_string) {
  Note("open " + connection_string.Text());
  return std::make_unique<FakeSession>(shared_from_this());
}

void FakeDatabase::Note(const std::string& event) {
  events.push_back(event);
  for (const auto& [part, fault] : failures_) {
    if (event.find(part) != std::string::npos) throw fault;
  }
}

db::Result FakeDatabase::Answer(const SentStatement& statement) const {
  db::Result result;
  if (const auto query = queries.find(statement.text); query != queries.end()) {
    FakeRows rows = query->second;
    result.complete = rows.rows.size() <= statement.most_rows;
    if (!result.complete) rows.rows.resize(statement.most_rows);
    result.rows = MakeRowSet(rows);
    return result;
  }
  if (automation::SameFolded(statement.text.substr(0, 6), "select")) {
    throw db::Fault(db::FaultKind::Other, 208, "42S02", "No answer is scripted for " + statement.text);
  }
  result.affected = affected;
  result.identity = identity;
  return result;
}

std::size_t FakeDatabase::Count(std::string_view event) const {
  return static_cast<std::size_t>(std::count(events.begin(), events.end(), event));
}

std::vector<SentStatement> FakeDatabase::Writes() const {
  std::vector<SentStatement> writes;
  for (const SentStatement& statement : statements) {
    if (!automation::SameFolded(statement.text.substr(0, 6), "select")) writes.push_back(statement);
  }
  return writes;
}

void FakeDatabase::Forget() {
  events.clear();
  statements.clear();
}

FakeWorld::FakeWorld() {
  sessions->AddDriver("", database);
  auto environment = std::make_shared<platform::Environment>();
  environment->sessions = sessions;
  environment_ = std::make_unique<platform::Environment::ForThread>(environment);
}

std::shared_ptr<db::Connection> FakeWorld::Connect(const std::string& connection_string) {
  auto connection = std::make_shared<db::Connection>();
  connection->Open(connection_string, std::nullopt, std::nullopt, std::nullopt);
  return connection;
}

}  // namespace talvex::test
