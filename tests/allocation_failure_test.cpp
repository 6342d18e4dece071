// Every function of the library with each of its allocations failing in turn: it gives what its header says,
// leaves no block, stream or statement behind, and the caller's own objects are whole.

#include <glog/logging.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "support/every_function.h"
#include "support/failing_allocations.h"

namespace {

// What the call gives with allocation `at` failing, as a text.
std::string Try(const LibraryCall& tried, int at, bool onwards, FailingAllocations::Report& report) {
  char outcome[256] = "";  // outside the thread that is counted
  report = FailingAllocations::Run(at, onwards, [&] {
    try {
      tried.call().copy(outcome, sizeof outcome - 1);
    } catch (const std::bad_alloc&) {
      std::string("bad_alloc").copy(outcome, sizeof outcome - 1);
    }
  });
  return outcome;
}

TEST(AllocationFailure, OfEachAllocationInTurn) {
  FLAGS_minloglevel = google::NUM_SEVERITIES;
  int failures = 0;
  for (const LibraryCall& tried : EveryFunction()) {
    SCOPED_TRACE(tried.name);
    FailingAllocations::Report report{};
    Try(tried, 0, false, report);  // what is made once in a process is made now
    for (const bool onwards : {false, true}) {
      int at = 0;
      do {
        const std::string outcome = Try(tried, ++at, onwards, report);
        EXPECT_EQ(report.blocks_left, 0) << "at allocation " << at;
        if (report.failed == 0) {
          EXPECT_EQ(outcome, tried.result);
        } else {
          EXPECT_NE(std::find(tried.failed.begin(), tried.failed.end(), outcome), tried.failed.end())
              << outcome << " at allocation " << at;
        }
        failures += report.failed;
      } while (report.failed > 0);
      EXPECT_EQ(at == 1, tried.failed.empty()) << "it asks for memory, or asks for none";
    }
  }
  RecordProperty("failed_allocations", failures);
}

}  // namespace
