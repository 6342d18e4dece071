#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>

namespace {

std::string Fixed(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

std::string ThreeDigits(double value) {
  return Fixed(value, value < 10 ? 2 : value < 100 ? 1 : 0);
}

std::string Duration(double nanoseconds) {
  if (nanoseconds < 1e3) return ThreeDigits(nanoseconds) + " ns";
  if (nanoseconds < 1e6) return ThreeDigits(nanoseconds / 1e3) + " µs";
  return ThreeDigits(nanoseconds / 1e6) + " ms";
}

std::string GoalText(const Goal& goal) {
  if (std::isinf(goal.ratio)) return "none";
  return Fixed(goal.ratio, 2) + (goal.allowance > 0 ? " + " + Fixed(goal.allowance, 0) + " ns" : "");
}

std::string ProcessorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "an unnamed processor";
}

void WriteTable(std::ostream& page, const std::vector<Result>& results) {
  page << "| function | data | HostUtil | beside it | ratio to the best | goal |\n"
          "|---|---|---:|---|---:|---|\n";
  for (const Result& result : results) {
    const Comparison& comparison = *result.comparison;
    page << "| `" << comparison.Function() << "` | " << comparison.Data() << " | "
         << Duration(result.times.front()) << " | ";
    for (std::size_t i = 1; i < result.times.size(); ++i) {
      page << (i > 1 ? ", " : "") << comparison.Contenders()[i].name << " " << Duration(result.times[i]);
    }
    if (!result.HasPeers()) {
      page << comparison.RemarkText() << " | | |\n";
      continue;
    }
    page << " | " << Fixed(result.Ratio(), 2) << " | " << GoalText(comparison.GoalOfRatio())
         << (result.GoalMet() ? "" : " **missed**") << " |\n";
  }
}

void WriteGrowth(std::ostream& page, const std::vector<Result>& results) {
  page << "\n## Growth\n\nWhat doubling the data does to our time; 2 is linear.\n\n"
          "| function | data | time grows |\n|---|---|---:|\n";
  for (std::size_t i = 1; i < results.size(); ++i) {
    const Comparison& half = *results[i - 1].comparison;
    const Comparison& whole = *results[i].comparison;
    if (whole.Series().empty() || whole.Series() != half.Series() || whole.Function() != half.Function()) {
      continue;
    }
    page << "| `" << whole.Function() << "` | " << half.Data() << " to " << whole.Data() << " | "
         << Fixed(results[i].times.front() / results[i - 1].times.front(), 2) << " |\n";
  }
}

void WriteMisses(std::ostream& page, const std::vector<Result>& results) {
  bool any = false;
  for (const Result& result : results) {
    if (!result.HasPeers() || result.GoalMet()) continue;
    if (!any) page << "\n## Goals that are missed\n\n";
    any = true;
    const Comparison& comparison = *result.comparison;
    const std::string& remark = comparison.RemarkText();
    page << "- `" << comparison.Function() << "`, " << comparison.Data() << ": "
         << (remark.empty() ? "no reason is known" : remark) << ".\n";
  }
}

}  // namespace

bool ShortestTimes::ReportContext(const Context& /*context*/) {
  return true;
}

void ShortestTimes::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      std::cerr << run.run_name.function_name << ": " << run.error_message << '\n';
      failed_ = true;
    } else if (run.run_type == Run::RT_Iteration) {
      const double time = run.cpu_accumulated_time / static_cast<double>(run.iterations) * 1e9;
      const auto [place, fresh] = nanoseconds_.emplace(run.run_name.function_name, time);
      if (!fresh) place->second = std::min(place->second, time);
    }
  }
}

double ShortestTimes::Of(const std::string& benchmark_name) const {
  const auto place = nanoseconds_.find(benchmark_name);
  return place != nanoseconds_.end() ? place->second : 0;
}

double Result::BestPeer() const {
  return *std::min_element(times.begin() + 1, times.end());
}

bool Result::GoalMet() const {
  const Goal& goal = comparison->GoalOfRatio();
  return times.front() <= goal.ratio * BestPeer() + goal.allowance;
}

Result ResultOf(const Comparison& comparison, const ShortestTimes& times) {
  Result result{&comparison, {}};
  for (const Comparison::Contender& contender : comparison.Contenders()) {
    result.times.push_back(times.Of(comparison.BenchmarkName(contender)));
  }
  return result;
}

void WritePage(std::ostream& page, const std::vector<Result>& results) {
  const auto missed = std::count_if(results.begin(), results.end(), [](const Result& result) {
    return result.HasPeers() && !result.GoalMet();
  });
  page
      << "# Benchmarks\n\nWritten by `scripts/bench`; do not edit.\n\n"
         "Every function beside what a C++ developer would use in its place, or beside a floor below which\n"
         "nothing can go: the same data, the same process, the contenders' repetitions in random order, "
         "every\n"
         "answer compared before anything is timed. A time is the shortest of all repetitions, in processor\n"
         "time; the ratio is our time to the best of the others', so below 1 we are faster. Machines "
         "differ,\n"
         "ratios less so. Calls go into the shared library, which the "
      << Fixed(kCallAllowance, 0) + " ns"
      << " in some goals allow for.\n\n"
         "This run: "
      << ProcessorName() << ", compiler " << __VERSION__ << ", " << results.size() << " comparisons, "
      << missed << " goals missed.\n\n![speed beside the best peer](benchmarks.svg)\n\n";
  WriteTable(page, results);
  WriteGrowth(page, results);
  WriteMisses(page, results);
}

void WritePictureData(std::ostream& data, const std::vector<Result>& results) {
  std::set<std::string> seen;
  for (const Result& first : results) {
    const std::string& function = first.comparison->Function();
    if (!first.HasPeers() || !seen.insert(function).second) continue;
    double sum = 0;
    double count = 0;
    double worst = HUGE_VAL;
    double best = 0;
    for (const Result& result : results) {
      if (result.comparison->Function() != function) continue;
      const double speed = 1 / result.Ratio();
      sum += std::log(speed);
      count += 1;
      worst = std::min(worst, speed);
      best = std::max(best, speed);
    }
    data << '"' << function << "\" " << std::exp(sum / count) << ' ' << worst << ' ' << best << '\n';
  }
}
