// Internal. What the system has for copying a file without passing its bytes through the process. Offsets are
// those of the descriptors. Either may fail where reading and writing would not: do that then.

#pragma once

#include <cstddef>

namespace Platform {

// Makes `to`, which is empty, share the bytes of `from` until one of them is written. False where the file
// system cannot.
bool CloneFile(int from, int to);

// Copies up to `most` bytes. The number copied; 0 at the end of `from`, and when nothing could be copied.
std::size_t CopyRange(int from, int to, std::size_t most);

}  // namespace Platform
