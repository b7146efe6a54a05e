#include "adapters/suite/suite_database.h"

#include <optional>

namespace talvex::adapters::suite {

SuiteDatabase::SuiteDatabase(const std::string& connection_string)
    : connection_(std::make_shared<platform::database::Connection>()) {
  connection_->Open(connection_string, std::nullopt, std::nullopt, std::nullopt);
}

platform::database::RowSet SuiteDatabase::Rows(std::string_view query, std::size_t most_rows) {
  return connection_->Run(query, {}, most_rows).rows;
}

}  // namespace talvex::adapters::suite
