// Every function of the library with each of its allocations failing in turn: it gives what its header says,
// leaves no block, stream or statement behind, and the caller's own objects are whole.

#include <glog/logging.h>
#include <gmock/gmock.h>

#include <new>

#include "support/every_function.h"
#include "support/failing_allocations.h"

namespace {

TEST(AllocationFailure, OfEachAllocationInTurn) {
  FLAGS_minloglevel = google::NUM_SEVERITIES;
  for (const LibraryCall& tried : EveryFunction()) {
    std::string outcome(256, ' ');  // memory from outside the thread that is counted
    const std::function<void()> work = [&] {
      outcome.clear();
      try {
        outcome += tried.call();
      } catch (const std::bad_alloc&) {
        outcome += "bad_alloc";
      }
    };
    FailingAllocations::Run(0, false, work);  // what is made once in a process is made now
    for (const bool onwards : {false, true}) {
      bool failed = true;
      for (int at = 1; failed; ++at) {
        SCOPED_TRACE(tried.name + (" at allocation " + std::to_string(at)));
        const auto report = FailingAllocations::Run(at, onwards, work);
        failed = report.failed;
        EXPECT_EQ(report.blocks_left, 0);
        EXPECT_THAT(failed ? tried.failed : std::vector{tried.result}, testing::Contains(outcome));
        EXPECT_TRUE(at > 1 || failed != tried.failed.empty()) << "it asks for memory, or for none";
      }
    }
  }
}

}  // namespace
