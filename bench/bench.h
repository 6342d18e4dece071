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
#include <memory>
#include <string>
#include <string_view>

// Goals: our time over the best peer's, at most, or within so many nanoseconds of it; the label of the
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
    for ([[maybe_unused]] auto iteration : state) {
      auto answer = job();
      benchmark::DoNotOptimize(answer);
    }
    state.SetLabel(label);
  });
}

// `name` is FUNCTION/DATA. Exits unless all jobs return equal answers.
template <typename Ours, typename... Jobs>
void Compare(const std::string& name, const char* goal, Ours ours, Peer<Jobs>... peers) {
  if (!(... && (ours() == peers.job()))) {
    std::fprintf(stderr, "%s: the answers differ\n", name.c_str());
    std::exit(1);
  }
  Register(name + "/HostUtil", goal, ours);
  (Register(name + '/' + peers.name, "", peers.job), ...);
}

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};

// A block from malloc: a text, or as many bytes as `size` says.
struct Text {
  std::unique_ptr<char, FreeBlock> block;
  std::size_t size;
  std::string_view View() const { return size != 0 ? std::string_view(block.get(), size) : block.get(); }
  friend bool operator==(const Text& left, const Text& right) { return left.View() == right.View(); }
};
inline Text Own(char* block, std::size_t size = 0) {
  return {std::unique_ptr<char, FreeBlock>(block), size};
}

// An answer that differs from call to call, such as an identifier: never compared.
template <typename Value>
struct Unchecked {
  Value value;
  friend bool operator==(const Unchecked&, const Unchecked&) { return true; }
};
template <typename Value>
Unchecked(Value) -> Unchecked<Value>;

// Data, the same in every run.
inline constexpr std::size_t kKiB = 1024;
inline constexpr std::size_t kMiB = 1024 * kKiB;
std::string RandomBytes(std::size_t size, unsigned seed = 1);  // any value but NUL
std::string EnglishText(std::size_t size);
std::string Repeated(std::string_view piece, std::size_t size);
std::string SizeName(std::size_t size);  // "64 bytes", "100 KiB", "8 MiB"

const std::string& TemporaryFolder();  // removed when the program ends

void RegisterBackupLayout();
void RegisterDecoders();
void RegisterFields();
void RegisterMatching();
void RegisterPaths();
void RegisterPlists();
void RegisterTexts();
