// A progress line on standard error; nothing when that is not a terminal.
//
//   Progress progress;
//   progress.Advance(*manifest);     // for every entry; reads the clock every 16th time
//
// The destructor clears the line, and so does a signal that ends the process.

#pragma once

#include <chrono>
#include <cstdint>

#include "manifest.h"

class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Advance(Manifest& manifest) {
    ++count_;
    if (shown_ && count_ % kStride == 0) Show(manifest);
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::uint64_t kStride = 16;

  void Show(Manifest& manifest);

  bool shown_;
  bool drawn_ = false;
  std::uint64_t count_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_;
};
