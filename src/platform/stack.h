// Internal. How much stack the calling thread has left, for recursion that follows untrusted input.

#pragma once

#include <cstddef>

namespace Platform {

// Bytes. Asks the system once per thread, which takes some 50 microseconds on a Linux process's first thread.
// On a stack that is not the thread's own, such as a coroutine's: 256 KiB, half of what macOS gives a second
// thread.
std::size_t StackLeft();

}  // namespace Platform
