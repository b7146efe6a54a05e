#include "platform/database/query_outline.h"

#include <gtest/gtest.h>

namespace talvex::test {
namespace {

using platform::database::OutlineOf;

TEST(QueryOutline, TellsWhetherTheTextNamesAnOrder) {
  for (const char* const query :
       {"SELECT * FROM BUDGET ORDER BY BUDGETCODE", "select * from BUDGET where A='x' order by A",
        "SELECT * FROM A, B WHERE A.ID = B.ID ORDER BY 1"}) {
    EXPECT_TRUE(OutlineOf(query).ordered) << query;
  }
  for (const char* const query :
       {"SELECT * FROM BUDGET", "SELECT * FROM BUDGET WHERE A='ORDER BY A'",
        "SELECT * FROM BUDGET WHERE A IN (SELECT B FROM C ORDER BY B)", "SELECT [ORDER] FROM BUDGET",
        "SELECT * FROM BUDGET -- ORDER BY A", "DELETE FROM BUDGET"}) {
    EXPECT_FALSE(OutlineOf(query).ordered) << query;
  }
}

TEST(QueryOutline, TellsOneRowAboutAllRowsFromTheRowsThemselves) {
  for (const char* const query : {"SELECT MAX(LINENUMBER) AS HIGHEST FROM T WHERE A=1",
                                  "select count(*) from T", "SELECT 1+sum(A) FROM T"})
    EXPECT_TRUE(OutlineOf(query).aggregates) << query;
  for (const char* const query :
       {"SELECT A FROM T WHERE B = (SELECT MAX(B) FROM T)", "SELECT [MAX] FROM T", "SELECT A FROM T"})
    EXPECT_FALSE(OutlineOf(query).aggregates) << query;
}

}  // namespace
}  // namespace talvex::test
