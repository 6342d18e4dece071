// Makes allocations fail, and counts the blocks that are left behind. For executables that link libHostUtil
// as a library on a system with glibc, without a sanitizer: malloc and its family are replaced.
//
//   FailingAllocations::Report report = FailingAllocations::Run(3, false, [] { EveryFunction()[0].call(); });
//
// Only what libHostUtil, libBasic and the C++ library on their behalf allocate fails. Other libraries are
// spared: some of them abort when they get no memory.

#pragma once

#include <functional>

namespace FailingAllocations {

struct Report {
  bool failed;      // whether an allocation was refused
  int blocks_left;  // blocks that the thread took and nobody gave back
};

// Runs `work` on a thread of its own, until after the thread's objects are gone. Of the allocations made
// inside the library (inside_library_call), number `at` (from 1) fails, and with `onwards` every later one.
// `work` must not throw.
Report Run(int at, bool onwards, const std::function<void()>& work);

}  // namespace FailingAllocations
