// A fake ledger with record sets on it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/database/recordset.h"
#include "support/fake_database.h"

namespace talvex::test {

inline constexpr const char* kBudgets = "SELECT * FROM BUDGET";
inline constexpr const char* kLines = "select * from BUDGETLINES";

// Two tables: BUDGET with a text as its key, BUDGETLINES with a number that the database assigns.
class RecordsetWorld : public FakeWorld {
 public:
  RecordsetWorld();

  std::shared_ptr<platform::database::Connection> connection;

  [[nodiscard]] std::shared_ptr<platform::database::Recordset> Open(
      const std::string& query,
      platform::database::LockType lock_type = platform::database::LockType::ReadOnly) const;
};

// The values of a column from the current row to the end, one after another with blanks between.
[[nodiscard]] std::string Walk(platform::database::Recordset& set, const std::string& column);

// The optional arguments of these members left out.
void AddNew(platform::database::Recordset& set);
void Update(platform::database::Recordset& set);

}  // namespace talvex::test
