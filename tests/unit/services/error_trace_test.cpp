#include "services/error_trace.h"

#include <gtest/gtest.h>

#include "services/frame.h"
#include "services/lib_error_handling.h"
#include "support/stood_in_test.h"

namespace talvex::test {

namespace {

using automation::Error;
using Lib_ErrorHandling::BoundedEntry;
using Lib_ErrorHandling::BoundedTrace;
using Lib_ErrorHandling::Err_FormatMessage;
using Lib_ErrorHandling::kLongestTrace;

// The text of levels 1 (the last) to `levels`, each with its number and, every third, an information.
std::string Nested(int levels, std::string text = "bad") {
  for (int i = 1; i <= levels; ++i) {
    const auto information =
        i % 3 == 0 ? Lib_ErrorHandling::Information("of " + std::to_string(i)) : std::nullopt;
    text = Err_FormatMessage(text, 28, "Level." + std::to_string(i), information);
  }
  return text;
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// The number in "(... left out: N)", of which the text must have exactly one.
std::size_t LeftOut(const std::string& text, const std::string& what) {
  const std::string remark = "(" + what + " left out: ";
  EXPECT_EQ(Occurrences(text, remark), 1U);
  const std::size_t at = text.find(remark);
  return at == std::string::npos ? 0 : std::stoul(text.substr(at + remark.size()));
}

TEST(ErrorTrace, ATextThatFitsIsKeptToTheLetter) {
  for (const int levels : {0, 1, 2, 500}) EXPECT_EQ(BoundedTrace(Nested(levels)), Nested(levels));
  const std::string just_fits(kLongestTrace, 'x');
  EXPECT_EQ(BoundedTrace(just_fits), just_fits);
  EXPECT_LT(BoundedTrace(just_fits + "x").size(), kLongestTrace);
}

TEST(ErrorTrace, AnEntryShowsThirtyTwoLevelsAndOfMoreTheFirstAndTheLastSixteen) {
  EXPECT_EQ(BoundedEntry(Nested(32)), Nested(32));
  const std::string entry = BoundedEntry(Nested(100));
  EXPECT_EQ(LeftOut(entry, "levels"), 68U);
  EXPECT_EQ(Occurrences(entry, "ERROR 0x1C"), 32U);
  EXPECT_TRUE(
      entry.starts_with("\r\nERROR 0x1C\r\n METHOD: Level.100\r\n DESC: \r\nERROR 0x1C\r\n METHOD: "
                        "Level.99\r\n"))
      << entry;
  EXPECT_NE(
      entry.find(" METHOD: Level.85\r\n DESC: (levels left out: 68)\r\nERROR 0x1C\r\n METHOD: Level.16\r\n"),
      std::string::npos)
      << entry;
  // The tails belong to the same levels as the heads: 3 to 15 inside, then 87 to 99 outside.
  EXPECT_NE(entry.find(" DESC: bad.\r\n.\r\n.\r\n INFO: of 3.\r\n.\r\n.\r\n.\r\n INFO: of 6.\r\n"),
            std::string::npos)
      << entry;
  EXPECT_NE(entry.find(" INFO: of 15.\r\n.\r\n.\r\n.\r\n.\r\n INFO: of 87.\r\n"), std::string::npos) << entry;
  EXPECT_TRUE(entry.ends_with(" INFO: of 99.\r\n.\r\n")) << entry;
  EXPECT_EQ(entry.find("of 18."), std::string::npos);
}

TEST(ErrorTrace, ATraceThatGoesOnGrowingStaysBoundedAndCountsEveryLevel) {
  std::string text = "bad";
  constexpr int kLevels = 5000;
  for (int i = 1; i <= kLevels; ++i) {
    text = BoundedTrace(Err_FormatMessage(text, 28, "Level." + std::to_string(i), std::nullopt));
    ASSERT_LE(text.size(), kLongestTrace) << "level " << i;
  }
  EXPECT_TRUE(text.starts_with("\r\nERROR 0x1C\r\n METHOD: Level.5000\r\n")) << text.substr(0, 100);
  EXPECT_EQ(LeftOut(text, "levels") + Occurrences(text, "ERROR 0x1C"), std::size_t{kLevels});
  EXPECT_NE(text.find(" METHOD: Level.1\r\n DESC: bad.\r\n"), std::string::npos);
  const std::string entry = BoundedEntry(text);
  EXPECT_EQ(LeftOut(entry, "levels") + Occurrences(entry, "ERROR 0x1C"), std::size_t{kLevels});
  EXPECT_NE(entry.find(" METHOD: Level.1\r\n DESC: bad.\r\n"), std::string::npos);
}

TEST(ErrorTrace, AVeryLongPartIsShortenedInItsMiddleOnceAndNoCharacterIsTakenApart) {
  std::string statement = "SELECT '";
  for (int i = 0; i < 30000; ++i) statement += "é";
  statement += "x' FROM NOWHERE";
  std::string text = BoundedTrace(Err_FormatMessage("refused", 5, "Inner", statement + statement));
  for (int i = 0; i < 1000; ++i)
    text = BoundedTrace(Err_FormatMessage(text, 5, "Level.Outer." + std::to_string(i), std::nullopt));
  EXPECT_LE(text.size(), kLongestTrace);
  const std::size_t bytes = LeftOut(text, "bytes");
  EXPECT_GT(bytes, statement.size());
  EXPECT_LT(bytes, 2 * statement.size());
  const std::size_t at = text.find("(bytes left out");
  EXPECT_EQ(text.substr(at - 2, 2), "é");
  EXPECT_EQ(text.substr(text.find(')', at) + 1, 2), "é");
  EXPECT_NE(text.find(" METHOD: Inner\r\n DESC: refused.\r\n INFO: SELECT 'éé"), std::string::npos);
  EXPECT_NE(text.find("x' FROM NOWHERE.\r\n"), std::string::npos);
}

TEST(ErrorTrace, EveryLevelOfAFailingCallLogsABoundedEntryAndRaisesABoundedText) {
  WithStandIns([](StoodIn& test) {
    constexpr int kDepth = 2000;
    const std::function<void(int)> call = [&](int depth) {
      Handled("Talvex.Call", [&] { depth == 0 ? throw Error(13, "Source", "bad") : call(depth - 1); });
    };
    const auto raised = ErrorOf([&] { call(kDepth - 1); });
    EXPECT_LE(raised.description.size(), kLongestTrace);
    EXPECT_EQ(LeftOut(raised.description, "levels") + Occurrences(raised.description, "ERROR 0xD"),
              std::size_t{kDepth});
    EXPECT_EQ(raised.source, "Source");
    ASSERT_EQ(test.Record().log.size(), std::size_t{kDepth});
    for (const LogEntry& entry : test.Record().log) {
      ASSERT_LE(entry.text.size(), 2000U);
      ASSERT_NE(entry.text.find(" DESC: bad.\r\n"), std::string::npos);
    }
  });
}

TEST(ErrorTrace, ANoteThatIsNoErrorIsBoundedInTheLogAsWell) {
  WithStandIns([](StoodIn& test) {
    std::int32_t level = 0;
    Lib_ErrorHandling::Err_Log(level, "M", std::string(1000000, 'x'));
    ASSERT_EQ(test.Record().log.size(), 1U);
    EXPECT_LE(test.Record().log[0].text.size(), kLongestTrace);
    EXPECT_GT(LeftOut(test.Record().log[0].text, "bytes"), 900000U);
  });
}

}  // namespace

}  // namespace talvex::test
