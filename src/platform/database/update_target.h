// Where a record set's changes are written.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database/driver.h"

namespace talvex::platform::database {

// A table, and how the columns of a record set stand to it.
struct UpdateTarget {
  UpdateTarget() = default;  // No table.
  UpdateTarget(const TableInfo& info, const std::vector<std::string>& columns);

  std::string table;          // Empty when there is none.
  std::vector<bool> belongs;  // For every column of the set, whether it is the table's.
  std::vector<std::size_t>
      keys;  // The set's columns that are the table's key; empty unless all of it is there.
  std::optional<std::size_t> assigned;  // The set's column that the database gives a number to.
};

}  // namespace talvex::platform::database
