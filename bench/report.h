// Collects the times of the contenders and writes what they come to.

#pragma once

#include <benchmark/benchmark.h>

#include <deque>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "comparison.h"

// The shortest processor time of each benchmark over its repetitions, in nanoseconds. On a machine that does
// other things too, whatever disturbs a repetition only lengthens it, so the shortest is the steadiest.
class ShortestTimes : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  // Zero when the benchmark did not run.
  double Of(const std::string& benchmark_name) const;
  bool Failed() const { return failed_; }

 private:
  std::map<std::string, double> nanoseconds_;
  bool failed_ = false;
};

// A comparison's outcome: every contender's time, ours first.
struct Result {
  const Comparison* comparison;
  std::vector<double> times;

  bool HasPeers() const { return times.size() > 1; }
  double BestPeer() const;
  double Ratio() const { return times.front() / BestPeer(); }
  bool GoalMet() const;
};

Result ResultOf(const Comparison& comparison, const ShortestTimes& times);

// The Markdown page: a table of everything, how the time grows with the data, and the goals that are missed.
void WritePage(std::ostream& page, const std::vector<Result>& results);

// A line for each function, for the picture: its name, how many times as fast as its best peer it is on the
// average, at worst and at best over its data.
void WritePictureData(std::ostream& data, const std::vector<Result>& results);
