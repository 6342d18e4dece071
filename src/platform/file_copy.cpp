#include "platform/file_copy.h"

#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

bool Platform::CloneFile(int from, int to) {
  return ::ioctl(to, FICLONE, from) == 0;
}

std::size_t Platform::CopyRange(int from, int to, std::size_t most) {
  const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, most, 0);
  return copied < 0 ? 0 : static_cast<std::size_t>(copied);
}

#else  // macOS clones only to a new name, not to a descriptor.

bool Platform::CloneFile(int, int) {
  return false;
}

std::size_t Platform::CopyRange(int, int, std::size_t) {
  return 0;
}

#endif
