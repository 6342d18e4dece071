#include "platform/stack.h"

#include <pthread.h>

#include <cstdint>
#include <utility>

// The lowest address of the calling thread's stack, and its size.
static std::pair<std::uintptr_t, std::size_t> StackOfThread() {
#ifdef __APPLE__
  const std::size_t size = ::pthread_get_stacksize_np(::pthread_self());
  return {reinterpret_cast<std::uintptr_t>(::pthread_get_stackaddr_np(::pthread_self())) - size, size};
#else
  void* lowest = nullptr;
  std::size_t size = 0;
  if (pthread_attr_t attributes; ::pthread_getattr_np(::pthread_self(), &attributes) == 0) {
    ::pthread_attr_getstack(&attributes, &lowest, &size);
    ::pthread_attr_destroy(&attributes);
  }
  return {reinterpret_cast<std::uintptr_t>(lowest), size};
#endif
}

std::size_t Platform::StackLeft() {
  static thread_local const auto stack = StackOfThread();
  const std::size_t left = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - stack.first;
  return left < stack.second ? left : std::size_t{256} << 10;
}
