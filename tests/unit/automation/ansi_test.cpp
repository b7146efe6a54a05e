#include "automation/ansi.h"

#include <gtest/gtest.h>

namespace talvex::automation {
namespace {

TEST(ToAnsi, FollowsItsTable) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"plain 09 ~", "plain 09 ~"},
      {"\r\nté", "\r\nt\xE9"},
      {"ÀÿÖ£", "\xC0\xFF\xD6\xA3"},
      {"€ ‚ „ … ™ œ Ÿ ž", "\x80 \x82 \x84 \x85 \x99 \x9C \x9F \x9E"},
      {"“quoted” – ‘so’", "\x93quoted\x94 \x96 \x91so\x92"},
      {"Ελ", "??"},
      {"予算", "??"},
      {"😀!", "?!"},
      // A code point of the gap that the set leaves at 0x80 to 0x9F.
      {"\xC2\x85", "?"},
      // Bytes that are no UTF-8, one by one.
      {"a\xFF\x80z", "a??z"},
      {"\xE2\x82", "??"},
      {"\xE2\x82z", "??z"},
  };
  for (const auto& [utf8, ansi] : rows) EXPECT_EQ(ToAnsi(utf8), ansi) << utf8;
}

}  // namespace
}  // namespace talvex::automation
