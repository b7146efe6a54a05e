#include "platform/database/like_pattern.h"

#include <gtest/gtest.h>

namespace talvex::test {

namespace {

using platform::database::LikePattern;

struct LikeRow {
  const char* pattern;
  const char* text;
  bool matches;
};

TEST(LikePattern, MatchesAsItsSignsSay) {
  const LikeRow rows[] = {
      {"", "", true},
      {"", "a", false},
      {"abc", "ABC", true},
      {"abc", "abcd", false},
      {"abc", "ab", false},
      {"%", "", true},
      {"%", "anything", true},
      {"a%", "abc", true},
      {"a*", "abc", true},
      {"a%", "bac", false},
      {"%c", "abc", true},
      {"%c", "abcd", false},
      {"%b%", "abc", true},
      {"%d%", "abc", false},
      {"a%c", "ac", true},
      {"a%c", "abbbc", true},
      {"a%c%e", "abcde", true},
      {"%ab%ab", "abxab", true},
      {"%ab%ab", "ab", false},
      {"%%%a", "bba", true},
      {"_", "a", true},
      {"_", "", false},
      {"_", "ab", false},
      {"a_c", "abc", true},
      {"%_c", "c", false},
      {"_", "\xC3\xA9", true},
      {"__", "\xC3\xA9", false},
      {"%__x", "\xC3\xA9x?", false},
      {"caf_", "caf\xC3\xA9", true},
      {"50[%]", "50%", true},
      {"50[%]", "500", false},
      {"50[%]", "50[%]", false},
      {"%[%]%", "50% off", true},
      {"%[%]%", "50 off", false},
      {"[_]", "_", true},
      {"[_]", "a", false},
      {"[*]", "*", true},
      {"[[]x]", "[x]", true},
      {"[ab]", "a", false},
      {"[ab]", "[ab]", true},
      {"[", "[", true},
      {"[%", "[anything", true},
  };
  for (const LikeRow& row : rows) {
    EXPECT_EQ(LikePattern(row.pattern).Matches(row.text), row.matches) << row.pattern << " on " << row.text;
  }
}

TEST(LikePattern, ManyRunsDoNotTakeForever) {
  std::string pattern;
  for (int i = 0; i < 50; ++i) pattern += "%a";
  const std::string text(20'000, 'a');
  EXPECT_TRUE(LikePattern(pattern).Matches(text));
  EXPECT_FALSE(LikePattern(pattern + "b").Matches(text));
}

}  // namespace

}  // namespace talvex::test
