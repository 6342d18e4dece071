#include "file_status.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

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
