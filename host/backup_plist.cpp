#include "backup_plist.h"

#include <array>

#include "common/plist_util.h"

namespace {

constexpr std::uint64_t kLargest = 64 << 20;

}  // namespace

Plist ReadBackupPlist(const std::string& path, std::uint64_t size) {
  return Plist(size <= kLargest ? PlistUtil::ReadPlist(path.c_str()) : nullptr);
}

bool IsReadable(const std::string& path, std::uint64_t size) {
  const Stream stream(std::fopen(path.c_str(), "rb"));
  if (stream == nullptr) return false;
  // ReadBackupPlist has not read a larger file.
  std::array<char, 1 << 16> block;
  while (size <= kLargest && std::fread(block.data(), 1, block.size(), stream.get()) == block.size()) {
  }
  return std::ferror(stream.get()) == 0;
}
