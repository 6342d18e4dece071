// What most tests start with: GoogleTest, the standard headers that they all use, and what several of them do
// alike.

#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// Takes over a block from malloc and gives its text, or nothing for null.
inline std::optional<std::string> Take(char* block) {
  const std::unique_ptr<char, decltype(&std::free)> owner(block, &std::free);
  return block != nullptr ? std::optional<std::string>(block) : std::nullopt;
}

inline std::string Times(std::size_t times, const std::string& text) {
  std::string repeated;
  while (times-- > 0) repeated += text;
  return repeated;
}

// Runs `work` on a thread with a stack of so many bytes.
inline void RunOnStack(std::size_t bytes, void (*work)()) {
  pthread_attr_t attributes;
  pthread_t thread;
  ASSERT_EQ(::pthread_attr_init(&attributes) | ::pthread_attr_setstacksize(&attributes, bytes), 0);
  const auto run = [](void* function) -> void* { return (*static_cast<void (**)()>(function))(), nullptr; };
  ASSERT_EQ(::pthread_create(&thread, &attributes, run, &work), 0);
  ::pthread_join(thread, nullptr);
  ::pthread_attr_destroy(&attributes);
}
