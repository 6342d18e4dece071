#include "file_status.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

FileStatus StatusAt(int folder, const char* path) {
  struct stat status {};
  if (::fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    const int error = errno;
    const bool absent = error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
    return {absent ? FileKind::Absent : FileKind::Unreadable, 0, error};
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (S_ISREG(status.st_mode)) return {FileKind::Regular, size, 0};
  if (S_ISDIR(status.st_mode)) return {FileKind::Folder, size, 0};
  if (S_ISLNK(status.st_mode)) return {FileKind::Link, size, 0};
  return {FileKind::Other, size, 0};
}

FileStatus StatusOf(const std::string& path) {
  const FileStatus status = StatusAt(AT_FDCWD, path.c_str());
  if (status.kind == FileKind::Unreadable) throw Failure(path + ": " + std::strerror(status.error));
  return status;
}
