#include "automation/text.h"

#include <string>
#include <unordered_set>

#include <gtest/gtest.h>

namespace talvex::automation {
namespace {

TEST(Text, CaseIsThatOfAsciiLettersAlone) {
  struct Row {
    std::string text, folded, raised;
  };
  const Row rows[] = {{"", "", ""},
                      {"aZ09@[`{", "az09@[`{", "AZ09@[`{"},
                      {"Größe", "größe", "GRößE"},
                      {"\xC3\x84", "\xC3\x84", "\xC3\x84"},
                      {std::string("A\0b", 3), std::string("a\0b", 3), std::string("A\0B", 3)}};
  for (const Row& row : rows) {
    EXPECT_EQ(Folded(row.text), row.folded);
    EXPECT_EQ(Raised(row.text), row.raised);
  }
}

TEST(Text, ComparesWithoutCaseByteByByte) {
  struct Row {
    std::string a, b;
    int order;
  };
  const Row rows[] = {{"", "", 0},
                      {"", "a", -1},
                      {"ABC", "abc", 0},
                      {"ABC", "abd", -1},
                      {"abc", "ABCD", -1},
                      {"b", "ABC", 1},
                      {"_", "a", -1},  // As small letters: "_" comes before "a" though after "A".
                      {"_", "A", -1},
                      {"z", "\xC3\xA4", -1},  // Bytes beyond ASCII come after it.
                      {"\xC3\x84", "\xC3\xA4", -1}};
  for (const Row& row : rows) {
    EXPECT_EQ(CompareFolded(row.a, row.b), row.order) << row.a << " " << row.b;
    EXPECT_EQ(CompareFolded(row.b, row.a), -row.order) << row.b << " " << row.a;
    EXPECT_EQ(SameFolded(row.a, row.b), row.order == 0) << row.a << " " << row.b;
    EXPECT_EQ(SameCode(row.a, row.b), row.order == 0) << row.a << " " << row.b;
  }
}

TEST(Text, TrimsBlanksAndNothingElse) {
  EXPECT_EQ(Trimmed(""), "");
  EXPECT_EQ(Trimmed("   "), "");
  EXPECT_EQ(Trimmed("  a b  "), "a b");
  EXPECT_EQ(Trimmed("a"), "a");
  EXPECT_EQ(Trimmed("\ta\n"), "\ta\n");
  EXPECT_EQ(Trimmed(" \xC2\xA0 "), "\xC2\xA0");
}

TEST(Text, ReplacesEveryOccurrenceOnce) {
  EXPECT_EQ(Replaced("", "a", "b"), "");
  EXPECT_EQ(Replaced("it's 'so'", "'", "''"), "it''s ''so''");
  EXPECT_EQ(Replaced("aaa", "aa", "b"), "ba");
  EXPECT_EQ(Replaced("abc", "abc", ""), "");
  EXPECT_EQ(Replaced("abc", "x", "y"), "abc");
  EXPECT_EQ(Replaced("a", "a", "aa"), "aa");
}

TEST(Text, KnowsWellFormedUtf8) {
  const std::string good[] = {"",
                              "plain",
                              "\x7F",
                              "\xC2\x80",
                              "\xDF\xBF",
                              "\xE0\xA0\x80",
                              "\xED\x9F\xBF",
                              "\xEE\x80\x80",
                              "\xEF\xBF\xBF",
                              "\xF0\x90\x80\x80",
                              "\xF4\x8F\xBF\xBF",
                              std::string("a\0b", 3)};
  for (const std::string& text : good) EXPECT_TRUE(IsUtf8(text)) << ::testing::PrintToString(text);
  const std::string bad[] = {"\x80",
                             "\xBF",
                             "\xC0\x80",
                             "\xC1\xBF",
                             "\xC2",
                             "\xC2\x41",
                             "\xE0\x9F\xBF",
                             "\xED\xA0\x80",
                             "\xE2\x82",
                             "\xE2\x41\x80",
                             "\xF0\x8F\xBF\xBF",
                             "\xF4\x90\x80\x80",
                             "\xF5\x80\x80\x80",
                             "\xF0\x9F\x92",
                             "\xFF",
                             "ok\xE9"};
  for (const std::string& text : bad) EXPECT_FALSE(IsUtf8(text)) << ::testing::PrintToString(text);
}

TEST(Text, CountsCharactersNotBytes) {
  EXPECT_EQ(CharacterCount(""), 0U);
  EXPECT_EQ(CharacterCount("abc"), 3U);
  EXPECT_EQ(CharacterCount("Größe"), 5U);
  EXPECT_EQ(CharacterCount("\xE2\x82\xAC\xF0\x9F\x92\xB0"), 2U);
}

TEST(Text, ContainersFindNamesWithoutCase) {
  std::unordered_set<std::string, FoldedHash, FoldedEqual> names = {"Alpha", "beta"};
  EXPECT_TRUE(names.contains(std::string_view("ALPHA")));
  EXPECT_TRUE(names.contains("Beta"));
  EXPECT_FALSE(names.contains("gamma"));
  EXPECT_FALSE(names.insert("aLPHA").second);
  EXPECT_EQ(FoldedHash()("Code"), FoldedHash()("cODE"));
}

}  // namespace
}  // namespace talvex::automation
