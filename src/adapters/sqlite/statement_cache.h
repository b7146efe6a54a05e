// The prepared statements of a session.
#pragma once

#include "adapters/sqlite/statement.h"
#include "platform/database/statement_cache.h"

namespace talvex::adapters::sqlite {

using StatementCache = platform::database::StatementCache<Statement>;

}  // namespace talvex::adapters::sqlite
