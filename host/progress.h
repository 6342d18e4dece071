// One line on standard error that tells how far a long reading is; nothing when that is no terminal.
//
//   Progress progress;
//   progress.Advance(*manifest);     // at every entry; looks at the clock now and then
//
// The line goes with the object, and with the process when an interrupt ends it.

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
