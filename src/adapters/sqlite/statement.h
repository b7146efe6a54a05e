// A prepared statement.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/sqlite/database.h"
#include "automation/variant.h"
#include "platform/database/driver.h"
#include "platform/database/sql_text.h"

namespace talvex::adapters::sqlite {

// A statement that was prepared once and runs any number of times. Must not outlive its database.
class Statement {
 public:
  using Parameters = std::vector<platform::database::SqlShape::Parameter>;

  // `gives_identity` says that the statement inserts into a table whose key the database assigns.
  Statement(Database& database, std::string_view text, bool gives_identity);

  // Runs the statement; the quoted texts stand in `parameters`, the caller's values in `given`. Gives the
  // rows alone. The statement is ready for its next run when this returns or raises.
  [[nodiscard]] platform::database::Result Run(const Parameters& parameters,
                                               std::span<const automation::Variant> given,
                                               std::size_t most_rows);

  [[nodiscard]] bool Writes() const noexcept { return writes_; }
  [[nodiscard]] bool GivesIdentity() const noexcept { return gives_identity_; }

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* handle) const noexcept { sqlite3_finalize(handle); }
  };

  void Describe();
  void DescribeAgainWhenChanged();
  void Bind(const Parameters& parameters, std::span<const automation::Variant> given);
  void BindValue(int place, const automation::Variant& value);
  void BindText(int place, std::string_view text);
  void BindNumber(int place, double number);
  [[nodiscard]] bool Step();
  void AppendRow(platform::database::RowSet& rows) const;
  void AppendValue(platform::database::RowSet& rows, int column) const;
  [[nodiscard]] std::string_view TextAt(int column) const noexcept;

  Database& database_;
  std::unique_ptr<sqlite3_stmt, Finalize> handle_;
  bool writes_ = false;
  bool gives_identity_ = false;
  int preparations_ = 0;  // How often SQLite has prepared the statement anew, since a table had changed.
  std::vector<std::string> names_;
  std::vector<bool>
      are_dates_;  // By column, from the declared type; all other values are read as they are stored.
};

}  // namespace talvex::adapters::sqlite
