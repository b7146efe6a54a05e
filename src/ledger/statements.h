// The statements and readings that several operations of the ledger share.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "automation/dictionary.h"
#include "platform/database/literals.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex {

// The parents of a budget, one level up.
[[nodiscard]] inline std::string ParentsOf(std::string_view code) {
  return "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET=" +
         platform::database::TextLiteral(code);
}

// A column of a query's rows, each value both key and item, in the order of the rows.
[[nodiscard]] inline std::shared_ptr<automation::Dictionary> CodesOf(const std::string& query,
                                                                     const std::string& column) {
  auto connection = Lib_General::getConnection();
  return Lib_SQL::Sql_getRecords(connection, query, column, column);
}

}  // namespace talvex
