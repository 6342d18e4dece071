// Calls every function from eight threads at once; the thread sanitizer reports what they share.

#include <glog/logging.h>

#include <latch>
#include <thread>

#include "common/utils/paths.h"
#include "platform/autorelease_pool.h"
#include "platform/foundation.h"
#include "support/every_function.h"
#include "support/testing.h"

namespace {

// Objects in the pools around the innermost one must survive the calls.
void Work(char letter) {
  const std::string path = "/" + std::string(100, letter) + "/";
#ifdef HOSTUTIL_FOUNDATION
  const AutoreleasePool outermost;  // GNUstep leaks what is autoreleased outside any pool
#endif
  Foundation::String* const outside = Foundation::StringWithUtf8(path.c_str());
  const AutoreleasePool outer;
  Foundation::String* const in_outer = Foundation::StringWithUtf8(path.c_str());
  for (int round = 0; round < 20; ++round) {
    const AutoreleasePool inner;
    for (const LibraryCall& each : EveryFunction()) EXPECT_EQ(each.call(), each.result) << each.name;
    EXPECT_EQ(Utils::GetParentDir(path.c_str()), path);
    EXPECT_EQ(Foundation::Utf8(in_outer), path);
  }
  EXPECT_EQ(Foundation::Utf8(outside), path);
}

TEST(Threads, CallEveryFunctionAtOnce) {
  FLAGS_minloglevel = google::NUM_SEVERITIES;
  std::latch start(8);
  std::vector<std::thread> threads;
  for (const char letter : std::string("abcdefgh")) {
    threads.emplace_back([&start, letter] { start.arrive_and_wait(), Work(letter); });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
