// Which database the installations of tests work on.
#pragma once

#include <string>

#include "automation/date.h"

namespace talvex::test {

// The database of one installation. It is an embedded one unless the variable TALVEX_TEST_STORE holds the
// connection string of a database on a PostgreSQL server, as a user who may make others, or on the test
// server of tests/tds: then it is a new one there, made by the first test of the process with tables and
// texts and copied for every other, and gone with the object.
class TestStore {
 public:
  TestStore();
  ~TestStore();
  TestStore(const TestStore&) = delete;
  TestStore& operator=(const TestStore&) = delete;

  // Whether tests run on the embedded database.
  [[nodiscard]] static bool IsEmbedded();
  // Whether GETDATE() follows the server's clock alone, which no driver can fix; the test server's can be set
  // for each database.
  [[nodiscard]] static bool HasClockOfItsOwn();
  void SetClock(automation::Date now) const;
  // What an installation is made with; empty for the embedded database.
  [[nodiscard]] const std::string& ConnectionText() const noexcept { return connection_string_; }
  // The query for the names of the component's tables.
  [[nodiscard]] static std::string TablesQuery();

 private:
  std::string name_;
  std::string connection_string_;
};

}  // namespace talvex::test
