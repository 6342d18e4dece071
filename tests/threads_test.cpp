// Every function from eight threads at once; the thread sanitizer tells what they share.

#include <glog/logging.h>
#include <gtest/gtest.h>

#include <barrier>
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

// Starts the threads together, so that they meet.
template <typename Work>
void OnThreads(Work work) {
  std::barrier start(kThreads);
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&start, &work, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
}

TEST(Threads, CallEveryFunctionAtOnce) {
  FLAGS_minloglevel = google::NUM_SEVERITIES;
  testing::internal::CaptureStdout();
  OnThreads([](int /*thread*/) {
    for (int round = 0; round < kRounds; ++round) {
      const AutoreleasePool pool;
      for (const LibraryCall& each : EveryFunction()) EXPECT_EQ(each.call(), each.result) << each.name;
    }
  });
  const std::string printed = testing::internal::GetCapturedStdout();
  int lists = 0;
  for (std::size_t at = 0; (at = printed.find("PrintPlist END", at)) != std::string::npos; ++at) ++lists;
  EXPECT_EQ(lists, kThreads * kRounds);
}

TEST(Threads, KeepTheirPoolsApart) {
  OnThreads([](int i) {
    const std::string path = "/" + std::string(100, static_cast<char>('a' + i)) + "/";
    Foundation::String* const outside = Foundation::StringWithUtf8(path.c_str());
    const AutoreleasePool outer;
    Foundation::String* const in_outer = Foundation::StringWithUtf8(path.c_str());
    for (int round = 0; round < kRounds; ++round) {
      const AutoreleasePool inner;
      EXPECT_EQ(Utils::GetParentDir(path.c_str()), path);
      EXPECT_EQ(Foundation::Utf8(in_outer), path);
    }
    EXPECT_EQ(Foundation::Utf8(outside), path);
    EXPECT_EQ(Foundation::Utf8(in_outer), path);
  });
}

}  // namespace
