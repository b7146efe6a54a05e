// Writes the changes of a record set's rows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/database/connection.h"
#include "platform/database/record_data.h"

namespace talvex::platform::database {

// Writes one row, by one statement: an added one with the columns that were set, another one where its key
// and the old values of the changed columns are still what they were. Returns the number that the database
// assigned to an added row. A change that changes nothing sends nothing.
//
// A row that is not found raises -2147217864. 3251 is raised, and nothing sent, when the target is no table,
// when a changed column is not the table's, and when a row that was there cannot be told by its key.
std::optional<std::int64_t> WriteRow(Connection& connection, const UpdateTarget& target,
                                     const std::vector<std::string>& columns, const RowChange& change);

}  // namespace talvex::platform::database
