// A progress line on standard error; nothing when that is not a terminal.
//
//   Progress progress;
//   progress.Advance(*manifest);     // for every entry; reads the clock every 16th time
//
// The destructor clears the line, and so does a signal that ends the process. While an Interruption exists,
// only the destructor does.

#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "manifest.h"

class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool IsShown() const { return shown_; }

  // The time since the construction, "00:00:01".
  std::string Elapsed() const;

  void Advance(Manifest& manifest) {
    ++count_;
    if (shown_ && count_ % kStride == 0) Show(manifest);
  }

  // Shows bytes instead of entries.
  void AdvanceBytes(std::uint64_t done, std::uint64_t total) {
    if (shown_) ShowBytes(done, total);
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::uint64_t kStride = 16;

  void Show(Manifest& manifest);
  void ShowBytes(std::uint64_t done, std::uint64_t total);
  bool IsDue();
  double Seconds() const;
  void Draw(std::string line, std::uint64_t done, std::uint64_t total);

  bool shown_;
  std::uint64_t count_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_;
};
