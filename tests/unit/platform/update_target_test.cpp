#include "platform/database/update_target.h"
#include "platform/database/query_outline.h"

#include <gtest/gtest.h>

namespace talvex::test {

namespace {

using platform::database::TableInfo;
using platform::database::TableOfQuery;
using platform::database::UpdateTarget;

TEST(TableOfQuery, IsTheOneTableBehindFrom) {
  for (const char* query : {
           "select * from BUDGET where 0=1",
           "SELECT BUDGETCODE, BUDGETTYPE FROM BUDGET",
           "SELECT * FROM BUDGET ORDER BY BUDGETCODE DESC",
           "  Select\t*\nFrom BUDGET;",
           "SELECT * FROM [BUDGET] WHERE BUDGETCODE='FROM X, Y'",
           "SELECT (SELECT MAX(ID) FROM BUDGETLINES) AS M, * FROM BUDGET",
           "SELECT * FROM BUDGET WHERE BUDGETCODE IN (SELECT BUDGETCODE FROM BUDGETLINES GROUP BY "
           "BUDGETCODE)",
           "SELECT 'from U' AS A FROM BUDGET -- , U",
       }) {
    EXPECT_EQ(TableOfQuery(query), "BUDGET") << query;
  }
}

TEST(TableOfQuery, IsNothingWhereRowsAreNotThoseOfOneTable) {
  for (const char* query : {
           "",
           "SELECT 1",
           "DELETE FROM BUDGET",
           "SELECT * FROM",
           "SELECT * FROM BUDGET, BUDGETLINES",
           "SELECT * FROM BUDGET B",
           "SELECT * FROM BUDGET JOIN BUDGETLINES ON 1=1",
           "SELECT * FROM BUDGET INNER JOIN BUDGETLINES ON 1=1",
           "SELECT * FROM other.BUDGET",
           "SELECT * FROM (SELECT * FROM BUDGET)",
           "SELECT DISTINCT USERID FROM BUDGET",
           "SELECT USERID FROM BUDGET WHERE 1=1 GROUP BY USERID",
           "SELECT * FROM BUDGET WHERE 1=1 UNION SELECT * FROM BUDGET",
           "SELECT * FROM BUDGET WHERE BUDGETCODE='open",
       }) {
    EXPECT_EQ(TableOfQuery(query), std::nullopt) << query;
  }
}

TableInfo Relations() {
  return {"BUDGETRELATIONS",
          {{"PARENTBUDGET", true, false}, {"CHILDBUDGET", true, false}, {"REMARK", false, false}}};
}

TEST(UpdateTarget, FindsTheKeyAmongColumnsInAnyCaseAndOrder) {
  const UpdateTarget target(Relations(), {"Remark", "TOTAL", "childBudget", "ParentBudget"});
  EXPECT_EQ(target.table, "BUDGETRELATIONS");
  EXPECT_EQ(target.keys, (std::vector<std::size_t>{3, 2}));
  EXPECT_EQ(target.belongs, (std::vector<bool>{true, false, true, true}));
  EXPECT_EQ(target.assigned, std::nullopt);
}

TEST(UpdateTarget, HasNoKeyWhenAPartOfItIsMissing) {
  EXPECT_TRUE(UpdateTarget(Relations(), {"REMARK", "CHILDBUDGET"}).keys.empty());
}

TEST(UpdateTarget, FindsTheColumnThatTheDatabaseAssigns) {
  const TableInfo lines{"BUDGETLINES", {{"ID", true, true}, {"BUDGETCODE", false, false}}};
  EXPECT_EQ(UpdateTarget(lines, {"BUDGETCODE", "ID"}).assigned, 1U);
  EXPECT_EQ(UpdateTarget(lines, {"BUDGETCODE"}).assigned, std::nullopt);
}

}  // namespace

}  // namespace talvex::test
