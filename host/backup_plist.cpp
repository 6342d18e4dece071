#include "backup_plist.h"

#include <cerrno>
#include <cstring>

#include "common/plist_util.h"
#include "failure.h"

Plist ReadBackupPlist(const std::string& path, std::uint64_t size) {
  constexpr std::uint64_t kLargest = 64 << 20;
  Plist plist(size <= kLargest ? PlistUtil::ReadPlist(path.c_str()) : nullptr);
  if (plist == nullptr && Stream(std::fopen(path.c_str(), "rb")) == nullptr) {
    throw Failure(path + ": " + std::strerror(errno));
  }
  return plist;
}
