// Runs every benchmark and prints, for each that has a floor beside it, how much dearer it is.
//
// "posting/talvex" and "posting/floor" do the same work in the same run, the floor on the bare database API.
// The figure to hold against a bound is the ratio of their processor times: it says the same on a fast
// machine and on a slow one.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
      if (median || single) times_[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%-36s %10s\n", "processor time", "x floor");
    for (const auto& [name, time] : times_) {
      const std::size_t slash = name.rfind('/');
      const auto floor = times_.find(name.substr(0, slash) + "/floor");
      if (floor == times_.end() || floor->first == name) continue;
      std::printf("%-36s %10.2f\n", name.c_str(), time / floor->second);
    }
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
