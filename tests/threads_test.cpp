// Every function from eight threads at once; the thread sanitizer tells what they share.

#include <glog/logging.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "common/utils/paths.h"
#include "platform/autorelease_pool.h"
#include "platform/foundation.h"
#include "support/every_function.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 20;

// Calls everything, with objects of the thread's own in pools outside the one that the calls fill.
void Work(char letter) {
  const std::string path = "/" + std::string(100, letter) + "/";
  Foundation::String* const outside = Foundation::StringWithUtf8(path.c_str());
  const AutoreleasePool outer;
  Foundation::String* const in_outer = Foundation::StringWithUtf8(path.c_str());
  for (int round = 0; round < kRounds; ++round) {
    const AutoreleasePool inner;
    for (const LibraryCall& each : EveryFunction()) EXPECT_EQ(each.call(), each.result) << each.name;
    EXPECT_EQ(Utils::GetParentDir(path.c_str()), path);
    EXPECT_EQ(Foundation::Utf8(in_outer), path);
  }
  EXPECT_EQ(Foundation::Utf8(outside), path);
}

TEST(Threads, CallEveryFunctionAtOnce) {
  FLAGS_minloglevel = google::NUM_SEVERITIES;
  testing::internal::CaptureStdout();
  std::atomic<int> started = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&started, i] {
      for (++started; started < kThreads;) std::this_thread::yield();  // so that they meet
      Work(static_cast<char>('a' + i));
    });
  }
  for (std::thread& thread : threads) thread.join();
  testing::internal::GetCapturedStdout();
}

}  // namespace
