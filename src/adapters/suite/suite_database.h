// How the services read their tables.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/database/connection.h"

namespace talvex::adapters::suite {

// An open connection for as long as it lives. Inside a transaction of the thread it works on the
// transaction's session; 5 is raised when that is one with another database.
class SuiteDatabase {
 public:
  explicit SuiteDatabase(const std::string& connection_string);

  // The rows of one query, the first `most_rows` of them.
  [[nodiscard]] platform::database::RowSet Rows(std::string_view query,
                                                std::size_t most_rows = platform::database::kAllRows);

 private:
  std::shared_ptr<platform::database::Connection> connection_;
};

}  // namespace talvex::adapters::suite
