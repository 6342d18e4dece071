// Benchmarks of this library's functions, each with the same job done by what a user would call instead.
//
//   Compare("StartWith/a path", kCallGoal, [=] { return Utils::StartWith(text, "x"); },
//           Peer{"absl::StartsWith", [=] { return absl::StartsWith(text, "x"); }});
//
// registers the benchmarks "StartWith/a path/HostUtil" and "StartWith/a path/absl::StartsWith". A job returns
// its answer, in an owner where something must be freed.

#pragma once

#include <benchmark/benchmark.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "common/owners.h"

// Goals: the most that our time may be of the best peer's, plus so many nanoseconds; the label of the
// benchmark. 2.5 ns is what a call into a shared library may cost.
inline constexpr char kCallGoal[] = "1.05 + 2.5 ns";
inline constexpr char kEqualGoal[] = "1.05";
inline constexpr char kAheadGoal[] = "0.67";

template <typename Job>
struct Peer {
  const char* name;
  Job job;
};
template <typename Job>
Peer(const char*, Job) -> Peer<Job>;

// Runs in the locale of its registration.
template <typename Job>
void Register(const std::string& name, const char* label, Job job) {
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    std::setlocale(LC_ALL, locale.c_str());
    static_cast<void>(job());  // the first call in a process grows the heap for those after it
    for ([[maybe_unused]] auto iteration : state) {
      auto answer = job();
      benchmark::DoNotOptimize(answer);
    }
    state.SetLabel(label);
  });
}

// `name` is FUNCTION/DATA.
template <typename Ours, typename... Jobs>
void Compare(const std::string& name, const char* goal, Ours ours, Peer<Jobs>... peers) {
  Register(name + "/HostUtil", goal, ours);
  (Register(name + '/' + peers.name, "", peers.job), ...);
}

using Owners::Block;

// Data, the same in every run.
inline constexpr std::size_t kKiB = 1024;
inline constexpr std::size_t kMiB = 1024 * kKiB;
std::string RandomBytes(std::size_t size, unsigned seed = 1);  // any value but NUL
std::string EnglishText(std::size_t size);
std::string Repeated(std::string_view piece, std::size_t size);
std::string SizeName(std::size_t size);  // "64 bytes", "100 KiB", "8 MiB"

const std::string& TemporaryFolder();  // removed when the program ends
