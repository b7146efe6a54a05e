#include "adapters/suite/error_log.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/suite.h"
#include "unit/adapters/suite_world.h"

namespace talvex::adapters::suite {
namespace {

using nlohmann::json;

// The environment has a clock and files, and neither XML nor databases: the log must do without them.
class SuiteErrorLog : public testing::Test {
 protected:
  // Writes an entry as the component does, by the names of members.
  void Write(std::string_view source, std::string_view text, std::int32_t level) const {
    std::int32_t by_reference = level;
    log_.WriteError(source, text, by_reference);
    EXPECT_EQ(by_reference, level);
  }
  [[nodiscard]] std::string Content() const { return files_->content["/inst/log/errors.jsonl"]; }

  std::shared_ptr<suite_test::MemoryFiles> files_ = std::make_shared<suite_test::MemoryFiles>();
  platform::suite::Log log_{
      std::make_shared<ErrorLog>(std::make_shared<Installation>(suite_test::kDirectory))};

 private:
  [[nodiscard]] std::shared_ptr<platform::Environment> World() const {
    auto world = std::make_shared<platform::Environment>();
    world->files = files_;
    world->clock = std::make_shared<platform::FixedClock>(automation::Date::Civil(2026, 11, 21, 14, 30, 5));
    return world;
  }
  platform::Environment::ForThread in_world_{World()};
};

TEST_F(SuiteErrorLog, AnEntryIsOneObjectOnOneLine) {
  Write("Talvex.BudgetT.Delete", "\r\nERROR 0x5\r\n DESC: \"quoted\" \\ é.\r\n", -3);
  const std::string content = Content();
  EXPECT_EQ(content.find('\n'), content.size() - 1);
  EXPECT_EQ(json::parse(content), json({{"time", "2026-11-21T14:30:05"},
                                        {"level", -3},
                                        {"source", "Talvex.BudgetT.Delete"},
                                        {"text", "\r\nERROR 0x5\r\n DESC: \"quoted\" \\ é.\r\n"}}));
  EXPECT_TRUE(content.starts_with("{\"time\":\"2026-11-21T14:30:05\",\"level\":-3,\"source\":")) << content;
}

TEST_F(SuiteErrorLog, EachEntryIsAppendedInOneWrite) {
  Write("a", "first", 0);
  Write("b", "second", 0);
  EXPECT_EQ(files_->calls["Append"], 2);
  const std::string content = Content();
  const std::size_t end = content.find('\n');
  EXPECT_EQ(json::parse(content.substr(0, end))["text"], "first");
  EXPECT_EQ(json::parse(content.substr(end + 1))["text"], "second");
}

TEST_F(SuiteErrorLog, BytesThatAreNotUtf8AreReplaced) {
  Write("caf\xE9",
        "a\xFF\xFE"
        "b\xC3",
        0);
  const json entry = json::parse(Content());
  EXPECT_EQ(entry["source"], "caf\uFFFD");
  EXPECT_EQ(entry["text"],
            "a\uFFFD\uFFFD"
            "b\uFFFD");
}

TEST_F(SuiteErrorLog, ItsFolderIsMade) {
  std::string folder;
  files_->before = [&](std::string_view call, const std::string& path) {
    if (call == "MakeFolder") folder = path;
  };
  Write("a", "b", 0);
  EXPECT_EQ(folder, "/inst/log");
}

TEST_F(SuiteErrorLog, ALogThatCannotBeWrittenRaises) {
  files_->before = suite_test::Failing("Append");
  EXPECT_EQ(suite_test::ErrorOf([&] { Write("a", "b", 0); }).number, automation::error_number::kFileAccess);
}

}  // namespace
}  // namespace talvex::adapters::suite
