// A database file of a test's own, and sessions with it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/sqlite/driver.h"
#include "support/temporary_folder.h"

namespace talvex::sqlite_test {

class SqliteWorld : public ::testing::Test {
 protected:
  using Session = platform::database::Session;
  using Result = platform::database::Result;
  using Values = std::vector<automation::Variant>;

  [[nodiscard]] std::string DatabasePath() const { return folder_.Path("talvex.db"); }

  void Create(std::string_view script) const { adapters::sqlite::CreateDatabase(DatabasePath(), script); }

  [[nodiscard]] std::unique_ptr<Session> Open(const std::string& more = "") {
    return driver_.Open(
        platform::database::ConnectionString("Driver=SQLite;Database=" + DatabasePath() + more));
  }

  // Makes a database with these tables and opens it.
  [[nodiscard]] std::unique_ptr<Session> OpenNew(std::string_view script) {
    Create(script);
    return Open();
  }

  static Result Run(Session& session, std::string_view text, const Values& parameters = {},
                    std::size_t most_rows = platform::database::kAllRows) {
    return session.Execute(text, parameters, most_rows);
  }

  // The one value of a query.
  static automation::Variant Value(Session& session, std::string_view text, const Values& parameters = {}) {
    const Result result = Run(session, text, parameters);
    EXPECT_EQ(result.rows.RowCount(), 1U) << text;
    EXPECT_EQ(result.rows.Columns().size(), 1U) << text;
    return result.rows.RowCount() == 0 ? automation::Variant() : result.rows.Value(0, 0);
  }

  // The fault that the steps raise; a failure of the test, and nothing, when they raise none.
  template <class Steps>
  static std::optional<platform::database::Fault> FaultFrom(Steps steps) {
    try {
      steps();
    } catch (const platform::database::Fault& fault) {
      return fault;
    }
    ADD_FAILURE() << "nothing was raised";
    return std::nullopt;
  }

  template <class Steps>
  static void ExpectFault(platform::database::FaultKind kind, std::int32_t native_error,
                          std::string_view state, std::string_view part, Steps steps) {
    const auto fault = FaultFrom(steps);
    if (!fault) return;
    EXPECT_EQ(fault->Kind(), kind) << fault->what();
    EXPECT_EQ(fault->NativeError(), native_error) << fault->what();
    EXPECT_EQ(fault->SqlState(), state) << fault->what();
    EXPECT_NE(std::string_view(fault->what()).find(part), std::string_view::npos) << fault->what();
  }

  automation::Date now_ = automation::Date::Civil(2026, 3, 16, 14, 30, 5);
  adapters::sqlite::SqliteDriver driver_{[this] { return now_; }};

 private:
  test::TemporaryFolder folder_;
};

}  // namespace talvex::sqlite_test
