#include "services/filter_literal.h"

#include <gtest/gtest.h>

#include "platform/database/filter.h"
#include "support/fake_database.h"

namespace talvex::test {

namespace {

TEST(FilterLiteral, IsTheTextBetweenQuotesWhereNothingMustBeEscaped) {
  EXPECT_EQ(FilterLiteral("A-1 [x] *_#\""), "'A-1 [x] *_#\"'");
  EXPECT_EQ(FilterLiteral(""), "''");
}

TEST(FilterLiteral, FindsExactlyItsTextWhateverCharactersItHas) {
  const std::vector<std::string> texts = {"50%",    "50[%]", "50[[%]]", "[%]", "%",  "[%", "%]",
                                          "O'Neil", "''",    "'[%]'",   "",    "%%", "[]", "50"};
  std::vector<Row> rows;
  for (const std::string& text : texts) rows.push_back({text});
  const auto set = MakeRowSet({{"CODE"}, rows});
  for (const std::string& text : texts) {
    const platform::database::Filter filter("CODE=" + FilterLiteral(text), set);
    for (std::size_t row = 0; row < texts.size(); ++row)
      EXPECT_EQ(filter.Matches(set, row), texts[row] == text) << text << " and " << texts[row];
  }
}

}  // namespace

}  // namespace talvex::test
