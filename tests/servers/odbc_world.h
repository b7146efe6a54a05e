// A database of a test's own on the server that TALVEX_TEST_STORE names, and sessions with it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/odbc/driver.h"
#include "support/test_store.h"

namespace talvex::odbc_test {

class OdbcWorld : public ::testing::Test {
 protected:
  using Session = platform::database::Session;
  using Result = platform::database::Result;
  using Values = std::vector<automation::Variant>;

  // These tests are run with a server, by the scripts beside them.
  void SetUp() override { ASSERT_FALSE(test::TestStore::IsEmbedded()) << "TALVEX_TEST_STORE is not set"; }

  [[nodiscard]] std::unique_ptr<Session> Open(const std::string& more = "") {
    return driver_.Open(platform::database::ConnectionString(store_.ConnectionText() + more));
  }

  static Result Run(Session& session, std::string_view text, const Values& parameters = {},
                    std::size_t most_rows = platform::database::kAllRows) {
    return session.Execute(text, parameters, most_rows);
  }

  // The one value of a query.
  static automation::Variant Value(Session& session, std::string_view text, const Values& parameters = {}) {
    const Result result = Run(session, text, parameters);
    EXPECT_EQ(result.rows.RowCount(), 1U) << text;
    return result.rows.RowCount() == 0 ? automation::Variant() : result.rows.Value(0, 0);
  }

  // The first column of a query's rows.
  static Values Column(Session& session, std::string_view text) {
    const Result result = Run(session, text);
    Values values;
    for (std::size_t row = 0; row < result.rows.RowCount(); ++row)
      values.push_back(result.rows.Value(row, 0));
    return values;
  }

  template <class Steps>
  static void ExpectFault(platform::database::FaultKind kind, std::int32_t native_error,
                          std::string_view state, std::string_view part, Steps steps) {
    try {
      steps();
    } catch (const platform::database::Fault& fault) {
      EXPECT_EQ(fault.Kind(), kind) << fault.what();
      EXPECT_EQ(fault.NativeError(), native_error) << fault.what();
      EXPECT_EQ(fault.SqlState(), state) << fault.what();
      EXPECT_NE(std::string_view(fault.what()).find(part), std::string_view::npos) << fault.what();
      return;
    }
    ADD_FAILURE() << "nothing was raised";
  }

  test::TestStore store_;
  adapters::odbc::OdbcDriver driver_;
};

}  // namespace talvex::odbc_test
