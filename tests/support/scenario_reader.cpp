#include <fstream>
#include <stdexcept>

#include "support/scenario.h"

namespace talvex::test {

std::vector<Scenario> ReadScenarios(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<Scenario> scenarios;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const auto fail = [&](const std::string& why) {
      throw std::runtime_error(path + ":" + std::to_string(number) + ": " + why);
    };
    const std::size_t first = line.find_first_not_of(' ');
    if (first == std::string::npos || line[first] == '#') continue;
    if (first > 0) {
      if (scenarios.empty() || scenarios.back().commands.empty()) fail("an expectation without a command");
      scenarios.back().commands.back().expected.push_back(line.substr(first));
      continue;
    }
    const std::size_t blank = line.find(' ');
    const std::string verb = line.substr(0, blank);
    const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
    if (verb == "scenario") {
      scenarios.push_back({path, rest, {}});
      continue;
    }
    if (scenarios.empty()) fail("a command before the first scenario");
    scenarios.back().commands.push_back({number, verb, rest, {}});
  }
  if (scenarios.empty()) throw std::runtime_error(path + ": no scenario");
  return scenarios;
}

}  // namespace talvex::test
