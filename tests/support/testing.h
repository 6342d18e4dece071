// GoogleTest, the standard headers and the helpers that most tests use.

#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// The text of a block from malloc, which is freed; none for null.
inline std::optional<std::string> Take(char* block) {
  const std::unique_ptr<char, decltype(&std::free)> owner(block, &std::free);
  return block != nullptr ? std::optional<std::string>(block) : std::nullopt;
}

inline std::string Times(std::size_t times, const std::string& text) {
  std::string repeated;
  while (times-- > 0) repeated += text;
  return repeated;
}

// Runs `work` on a thread whose stack has `bytes` bytes.
inline void RunOnStack(std::size_t bytes, void (*work)()) {
  pthread_attr_t attributes;
  pthread_t thread;
  ASSERT_EQ(::pthread_attr_init(&attributes) | ::pthread_attr_setstacksize(&attributes, bytes), 0);
  const auto run = [](void* function) -> void* { return (*static_cast<void (**)()>(function))(), nullptr; };
  ASSERT_EQ(::pthread_create(&thread, &attributes, run, &work), 0);
  ::pthread_join(thread, nullptr);
  ::pthread_attr_destroy(&attributes);
}
