// Every scenario file beside this one becomes tests, one a scenario.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include "support/scenario.h"
#include "support/source_tree.h"

namespace talvex::test {

namespace {

namespace fs = std::filesystem;

class ScenarioTest : public testing::Test {
 public:
  explicit ScenarioTest(Scenario scenario) : scenario_(std::move(scenario)) {}
  void TestBody() override { RunScenario(scenario_); }

 private:
  Scenario scenario_;
};

// A name that the test framework takes, from a title in words.
std::string NameOf(std::string title) {
  for (char& c : title) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  }
  return title;
}

const bool registered = [] {
  std::set<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(SourcePath("tests/scenarios"))) {
    if (entry.path().extension() == ".scenario") paths.insert(entry.path());
  }
  for (const auto& path : paths) {
    const std::string suite = "Scenario_" + NameOf(path.stem().string());
    for (const Scenario& scenario : ReadScenarios(path.string())) {
      testing::RegisterTest(suite.c_str(), NameOf(scenario.title).c_str(), nullptr, nullptr, __FILE__,
                            __LINE__, [scenario]() -> testing::Test* { return new ScenarioTest(scenario); });
    }
  }
  return true;
}();

// A broken registration would leave a green run without scenarios.
TEST(Scenarios, AreFoundAndRegistered) {
  EXPECT_TRUE(registered);
  const auto& unit = *testing::UnitTest::GetInstance();
  int suites = 0;
  for (int i = 0; i < unit.total_test_suite_count(); ++i) {
    if (std::string(unit.GetTestSuite(i)->name()).starts_with("Scenario_")) ++suites;
  }
  EXPECT_GE(suites, 1);
}

}  // namespace

}  // namespace talvex::test
