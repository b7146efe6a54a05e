// What SQLite reports, in the terms on which callers act.
#pragma once

#include <sqlite3.h>

#include <string>

#include "platform/database/driver.h"

namespace talvex::adapters::sqlite {

// The failure behind a result code, with SQL Server's number for it. `message` is what SQLite said.
[[nodiscard]] platform::database::Fault FaultOf(int code, const std::string& message);

// Whether a session can no longer be trusted after this result code: the file is damaged, or cannot be read.
[[nodiscard]] bool IsDamage(int code) noexcept;

}  // namespace talvex::adapters::sqlite
