// The world of suite_world.h with a database and an XML reader.
#pragma once

#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/libxml2/xml_engine.h"
#include "adapters/sqlite/driver.h"
#include "adapters/suite/installation.h"
#include "adapters/suite/services.h"
#include "automation/transaction_context.h"
#include "platform/database/session_pool.h"
#include "support/source_tree.h"
#include "unit/adapters/suite_world.h"

namespace talvex::suite_test {

// What went to a database: its openings, and each statement with the number of rows asked for.
struct Traffic {
  std::mutex mutex;  // For tests with several threads; those that read do so when the threads are done.
  int opened = 0;
  std::vector<std::pair<std::string, std::size_t>> statements;
};

// Passes everything on to another session and writes down what.
class RecordingSession final : public platform::database::Session {
 public:
  RecordingSession(std::unique_ptr<Session> inner, std::shared_ptr<Traffic> traffic)
      : inner_(std::move(inner)), traffic_(std::move(traffic)) {}
  platform::database::Result Execute(std::string_view text, std::span<const automation::Variant> parameters,
                                     std::size_t most_rows) override {
    {
      const std::lock_guard lock(traffic_->mutex);
      traffic_->statements.emplace_back(text, most_rows);
    }
    return inner_->Execute(text, parameters, most_rows);
  }
  void Begin() override { inner_->Begin(); }
  void BeginReading() override { inner_->BeginReading(); }
  void Commit() override { inner_->Commit(); }
  void Rollback() noexcept override { inner_->Rollback(); }
  std::shared_ptr<const platform::database::TableInfo> Table(std::string_view name) override {
    return inner_->Table(name);
  }
  [[nodiscard]] bool Usable() const noexcept override { return inner_->Usable(); }

 private:
  std::unique_ptr<Session> inner_;
  std::shared_ptr<Traffic> traffic_;
};

class RecordingDriver final : public platform::database::Driver {
 public:
  RecordingDriver(std::shared_ptr<Driver> inner, std::shared_ptr<Traffic> traffic)
      : inner_(std::move(inner)), traffic_(std::move(traffic)) {}
  std::unique_ptr<platform::database::Session> Open(
      const platform::database::ConnectionString& text) override {
    {
      const std::lock_guard lock(traffic_->mutex);
      ++traffic_->opened;
    }
    return std::make_unique<RecordingSession>(inner_->Open(text), traffic_);
  }

 private:
  std::shared_ptr<Driver> inner_;
  std::shared_ptr<Traffic> traffic_;
};

// An installation in memory whose database, with the real tables, is on disk. The services are registered,
// and the world is the calling thread's for as long as it lives.
class DatabaseWorld {
 public:
  explicit DatabaseWorld(std::string_view rows = {})
      : files(std::make_shared<MemoryFiles>()),
        classes(std::make_shared<automation::ClassRegistry>()),
        traffic(std::make_shared<Traffic>()),
        installation(std::make_shared<adapters::suite::Installation>(kDirectory)),
        connection_string("Driver=SQLite;Database=" + folder_.Path("talvex.db")),
        in_world_(MakeEnvironment()) {
    std::ifstream schema(test::SourcePath("schema/sqlite.sql"));
    const std::string script{std::istreambuf_iterator<char>(schema), {}};
    adapters::sqlite::CreateDatabase(folder_.Path("talvex.db"), script + std::string(rows));
    files->content["/inst/siteconfiguration.xml"] =
        "<siteconfiguration><application name='Vantor' configdir='.'><section name='CONNECTIONS'>"
        "<entry key='VantorConnection_ConnectionString'>" +
        connection_string + "</entry></section></application></siteconfiguration>";
    adapters::suite::RegisterServices(*classes, installation);
  }

  void Sql(const std::string& statement) const {
    const auto session = platform::Environment::Current().sessions->Acquire(connection_string);
    session->Execute(statement, {}, platform::database::kAllRows);
  }

  // The lines of the error log.
  [[nodiscard]] std::string Log() const {
    const auto found = files->content.find("/inst/log/errors.jsonl");
    return found == files->content.end() ? std::string() : found->second;
  }

 private:
  TemporaryFolder folder_;

 public:
  std::shared_ptr<MemoryFiles> files;
  std::shared_ptr<automation::ClassRegistry> classes;
  std::shared_ptr<Traffic> traffic;
  std::shared_ptr<adapters::suite::Installation> installation;
  std::string connection_string;

 private:
  [[nodiscard]] std::shared_ptr<platform::Environment> MakeEnvironment() const {
    auto world = std::make_shared<platform::Environment>();
    world->classes = classes;
    world->clock = std::make_shared<platform::FixedClock>(automation::Date::Civil(2026, 11, 21, 14, 30, 5));
    world->files = files;
    world->xml = std::make_shared<adapters::libxml2::XmlEngine>();
    world->sessions = std::make_shared<platform::database::SessionPool>();
    const auto sqlite =
        std::make_shared<adapters::sqlite::SqliteDriver>([clock = world->clock] { return clock->Now(); });
    world->sessions->AddDriver("SQLite", std::make_shared<RecordingDriver>(sqlite, traffic));
    return world;
  }

  platform::Environment::ForThread in_world_;
};

}  // namespace talvex::suite_test
