#include "backup_files.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "common/plist_util.h"
#include "common/utils.h"
#include "failure.h"
#include "library_text.h"

FileStatus StatusOf(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG) {
      return {FileKind::Absent, 0, error};
    }
    throw Failure(path + ": " + std::strerror(error));
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (S_ISREG(status.st_mode)) return {FileKind::Regular, size, 0};
  if (S_ISDIR(status.st_mode)) return {FileKind::Folder, size, 0};
  if (S_ISLNK(status.st_mode)) return {FileKind::Link, size, 0};
  return {FileKind::Other, size, 0};
}

std::string WithSeparator(const std::string& root) {
  if (root.empty()) throw Failure("the folder is not named");
  return Utils::EndWith(root, "/") ? root : root + '/';
}

BackupFolder::BackupFolder(const std::string& root) : root_(WithSeparator(root)) {
  // With the separator behind it the root itself may be a link: it is the user's word.
  const FileStatus status = StatusOf(root_);
  if (status.kind == FileKind::Absent) throw Failure(root + ": " + std::strerror(status.error));
}

std::string BackupFolder::PathOf(const char* name) const {
  return Taken(Utils::ConcatFilePath(root_.c_str(), name));
}

std::string BackupFolder::StoredPath(const std::string& id, bool two_level) const {
  return Utils::ConcatBackupFilePath(root_.c_str(), id.c_str(), two_level, false);
}

std::optional<std::uint64_t> BackupFolder::StoredSize(const std::string& path, bool two_level) {
  if (two_level && !IsFolder(path.substr(0, path.rfind('/')))) return std::nullopt;
  const FileStatus status = StatusOf(path);
  if (status.kind != FileKind::Regular) return std::nullopt;
  return status.size;
}

bool BackupFolder::IsFolder(const std::string& path) {
  const auto [place, is_new] = folders_.try_emplace(path, false);
  if (is_new) place->second = StatusOf(path).kind == FileKind::Folder;
  return place->second;
}

Plist ReadBackupPlist(const std::string& path, std::uint64_t size) {
  constexpr std::uint64_t kLargest = 64 << 20;
  Plist plist(size <= kLargest ? PlistUtil::ReadPlist(path.c_str()) : nullptr);
  if (plist == nullptr && Stream(std::fopen(path.c_str(), "rb")) == nullptr) {
    throw Failure(path + ": " + std::strerror(errno));
  }
  return plist;
}
