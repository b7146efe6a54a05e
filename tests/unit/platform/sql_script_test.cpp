#include "platform/database/sql_script.h"

#include <gtest/gtest.h>

#include "platform/database/fault.h"

namespace talvex::test {
namespace {

using platform::database::StatementsOf;
using Statements = std::vector<std::string_view>;

TEST(StatementsOf, CutsAtEverySemicolonThatEndsAStatement) {
  EXPECT_EQ(StatementsOf("A; B 'x;y';\n-- c;\nD /* ; */ e"), (Statements{"A", "B 'x;y'", "D /* ; */ e"}));
}

TEST(StatementsOf, LeavesOutWhatIsNoStatement) {
  EXPECT_EQ(StatementsOf(""), Statements{});
  EXPECT_EQ(StatementsOf(" ;; -- nothing\n;"), Statements{});
}

TEST(StatementsOf, KeepsTheBodyOfAFunctionWhole) {
  EXPECT_EQ(StatementsOf("DO $$ BEGIN a; b; END $$; NEXT"), (Statements{"DO $$ BEGIN a; b; END $$", "NEXT"}));
}

TEST(StatementsOf, RefusesATextThatHasNoEnd) {
  EXPECT_THROW(StatementsOf("A 'b; C"), platform::database::Fault);
}

}  // namespace
}  // namespace talvex::test
