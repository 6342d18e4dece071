// hostutil_bench FOLDER [--benchmark_...]: runs the comparisons and writes benchmarks.md and benchmarks.dat
// there.

#include <benchmark/benchmark.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <cstdio>
#include <fstream>
#include <iostream>
#include <limits>
#include <regex>
#include <string>
#include <vector>

#include "comparison.h"
#include "report.h"

namespace {

// Lets the allocator keep what it has, for the series whose data grows: fresh pages for a large block can
// cost more than the work done in them, and whether a block needs them hangs on its size.
void KeepPages() {
#ifdef __GLIBC__
  ::mallopt(M_MMAP_MAX, 0);
  ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
#endif
}

// The contenders of one comparison run close together and in random order. A goal that is missed is tried
// again, by all of them, since a busy machine may disturb even the shortest time.
Result Run(Comparison& comparison, ShortestTimes& times) {
  constexpr int kTrials = 5;
  comparison.Register();
  for (int trial = 1;; ++trial) {
    benchmark::RunSpecifiedBenchmarks(&times, "all");
    const Result result = ResultOf(comparison, times);
    if (trial < kTrials && !times.Failed() && result.HasPeers() && !result.GoalMet()) continue;
    benchmark::ClearRegisteredBenchmarks();
    return result;
  }
}

std::vector<Result> RunAll(ShortestTimes& times) {
  const std::regex wanted(benchmark::GetBenchmarkFilter());
  std::vector<Result> results;
  for (const bool steps : {false, true}) {
    if (steps) KeepPages();
    for (Comparison& comparison : AllComparisons()) {
      const std::string name = comparison.Function() + "/" + comparison.Data();
      if (comparison.Series().empty() == steps || !std::regex_search(name, wanted)) continue;
      std::cerr << name << '\n';
      results.push_back(Run(comparison, times));
    }
  }
  return results;
}

}  // namespace

int main(int argc, char** argv) {
  // What was given on the command line comes later and wins.
  std::vector<std::string> arguments = {argv[0], "--benchmark_enable_random_interleaving=true",
                                        "--benchmark_repetitions=9", "--benchmark_min_time=0.01"};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  if (count != 2) {
    std::cerr << "usage: hostutil_bench FOLDER [--benchmark_...]\n";
    return 2;
  }
  const std::string folder = pointers[1];

  // PrintPlist prints here.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 2;

  CompareBackupLayout();
  ComparePlists();
  CompareTexts();
  CompareMatching();
  ComparePaths();
  CompareFields();
  CompareDates();
  CompareDecoders();

  ShortestTimes times;
  const std::vector<Result> results = RunAll(times);
  if (times.Failed()) return 1;
  std::ofstream page(folder + "/benchmarks.md");
  WritePage(page, results);
  std::ofstream data(folder + "/benchmarks.dat");
  WritePictureData(data, results);
  return page.flush() && data.flush() ? 0 : 1;
}
