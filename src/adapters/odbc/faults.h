// What servers report through ODBC, in the terms on which callers act.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/database/fault.h"

namespace talvex::adapters::odbc {

// One diagnostic record.
struct Diagnostic {
  std::string sql_state;
  std::int32_t native_error = 0;
  std::string message;
};

// The failure behind the records of one call. The record that tells most decides: one whose native number is
// known (SQL Server's), else one whose SQLSTATE is known (all that psqlodbc has: its native number is always
// 1), else the first. The description is what that record says, without the names of the drivers that passed
// it on and without the details, which may hold a whole row.
[[nodiscard]] platform::database::Fault FaultOf(std::span<const Diagnostic> records);

// Whether the records say that the connection is gone.
[[nodiscard]] bool TellsLoss(std::span<const Diagnostic> records) noexcept;

// The failure of a call on a connection that is gone.
[[nodiscard]] platform::database::Fault LossOf(std::span<const Diagnostic> records);

// What the server itself said, without what the drivers put around it.
[[nodiscard]] std::string PlainMessage(std::string_view message);

}  // namespace talvex::adapters::odbc
