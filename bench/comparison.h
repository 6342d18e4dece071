// One job, done on the same data by this library and by what a C++ developer would use in its place.
//
//   Compare("StartWith", "a long text", kLevel)
//       .Ours([&text] { return Utils::StartWith(text, "x"); })
//       .Peer("absl::StartsWith", [&text] { return absl::StartsWith(text, "x"); });
//
// A job is a callable that does everything and returns its answer, an owner where there is something to
// release. All jobs of a comparison must give the same answer, which is looked at before anything is timed.
// Data is referred to and must live until the program ends (Kept, in sample_data.h).

#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// What our time may be, as a multiple of the best peer's.
struct Goal {
  double ratio;
  double allowance;  // and nanoseconds on top, for the call into a shared library
};
inline constexpr double kCallAllowance = 3;
inline constexpr Goal kLevel{1.05, kCallAllowance};
inline constexpr Goal kWellAhead{1 / 1.5, 0};
inline constexpr Goal kNoGoal{HUGE_VAL, 0};

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};
using Text = std::unique_ptr<char, FreeBlock>;

// An answer as text, to be compared.
std::string Describe(const std::string& text);
std::string Describe(const Text& text);
std::string Describe(const void* place);
std::string Describe(const std::vector<std::string>& texts);
std::string Describe(const std::pair<std::string, std::string>& texts);
template <typename Number>
requires std::is_arithmetic_v<Number> std::string Describe(Number number) {
  return std::to_string(number);
}

// The text with every digit and letter made alike: for answers that are never the same twice.
std::string Shape(std::string text);

class Comparison {
 public:
  struct Contender {
    std::string name;
    std::function<std::string()> answer;
    std::function<void(benchmark::State&)> run;
  };

  Comparison(std::string function, std::string data, Goal goal)
      : function_(std::move(function)), data_(std::move(data)), goal_(goal) {}

  // The job as this library does it; `check` calls a job and gives its answer as text.
  template <typename Job>
  Comparison& Ours(Job job) {
    return Add("HostUtil", job, [](const Job& checked) { return Describe(checked()); });
  }
  template <typename Job, typename Check>
  Comparison& Ours(Job job, Check check) {
    return Add("HostUtil", job, check);
  }

  // The same job, done otherwise.
  template <typename Job>
  Comparison& Peer(std::string name, Job job) {
    return Add(std::move(name), job, [](const Job& checked) { return Describe(checked()); });
  }
  template <typename Job, typename Check>
  Comparison& Peer(std::string name, Job job, Check check) {
    return Add(std::move(name), job, check);
  }

  // Why a goal that is missed cannot be met, or why there is nobody to be compared with.
  Comparison& Remark(std::string remark) {
    remark_ = std::move(remark);
    return *this;
  }

  // A step of a series whose steps double the data; the report tells how the time grows.
  Comparison& StepOf(std::string series) {
    series_ = std::move(series);
    return *this;
  }

  const std::string& Function() const { return function_; }
  const std::string& Data() const { return data_; }
  const Goal& GoalOfRatio() const { return goal_; }
  const std::string& RemarkText() const { return remark_; }
  const std::string& Series() const { return series_; }
  const std::vector<Contender>& Contenders() const { return contenders_; }

  // Hands every contender to the benchmark library. Each looks at the answers, once for all, before it runs.
  void Register();
  std::string BenchmarkName(const Contender& contender) const;

 private:
  template <typename Job, typename Check>
  Comparison& Add(std::string name, Job job, Check check) {
    const auto run = [job](benchmark::State& state) {
      for ([[maybe_unused]] auto iteration : state) {
        auto answer = job();
        benchmark::DoNotOptimize(answer);
      }
    };
    contenders_.push_back({std::move(name), [job, check] { return check(job); }, run});
    return *this;
  }

  bool AnswersAgree();

  std::string function_;
  std::string data_;
  Goal goal_;
  std::string remark_;
  std::string series_;
  std::vector<Contender> contenders_;
  std::once_flag checked_;
  bool agree_ = false;
};

// A new comparison, to be run by main().
Comparison& Compare(std::string function, std::string data, Goal goal);
std::deque<Comparison>& AllComparisons();

// The families, each in a file of its own.
void CompareBackupLayout();
void CompareDates();
void CompareDecoders();
void CompareFields();
void CompareMatching();
void ComparePaths();
void ComparePlists();
void CompareTexts();
