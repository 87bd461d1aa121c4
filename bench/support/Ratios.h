// Runs the registered benchmarks and prints, after Google Benchmark's own table, the time of each
// Lorvane benchmark divided by the time of its named rival.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace lorvane::bench {

class TimeCollector : public ::benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& ARuns) override {
    // With repetitions the median, reported after the single runs, is the one that counts.
    for (const Run& R : ARuns)
      if (!R.error_occurred && (R.run_type == Run::RT_Iteration || R.aggregate_name == "median"))
        Times[R.run_name.function_name] = R.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(ARuns);
  }
  std::map<std::string, double> Times;
};

/// Pairs of (ours, rival) benchmark names. A ratio above 1 means ours is slower.
inline int RunWithRatios(int argc, char** argv,
                         const std::vector<std::pair<std::string, std::string>>& APairs) {
  ::benchmark::Initialize(&argc, argv);
  TimeCollector Reporter;
  ::benchmark::RunSpecifiedBenchmarks(&Reporter);
  std::printf("\n%-44s %-36s %s\n", "Lorvane", "rival", "time ratio (ours / rival)");
  for (const auto& [Ours, Rival] : APairs) {
    auto A = Reporter.Times.find(Ours), B = Reporter.Times.find(Rival);
    if (A != Reporter.Times.end() && B != Reporter.Times.end())
      std::printf("%-44s %-36s %.2f\n", Ours.c_str(), Rival.c_str(), A->second / B->second);
  }
  ::benchmark::Shutdown();
  return 0;
}

} // namespace lorvane::bench
