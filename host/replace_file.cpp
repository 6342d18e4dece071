#include "replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "common/utils.h"
#include "failure.h"

namespace {

// False, with errno, when not all of it is on the disk.
bool WriteAll(int descriptor, std::string_view contents) {
  while (!contents.empty()) {
    const ssize_t written = ::write(descriptor, contents.data(), contents.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) contents.remove_prefix(static_cast<std::size_t>(written));
  }
  return ::fsync(descriptor) == 0;  // some file systems first notice here that they are full
}

}  // namespace

void ReplaceFile(const std::string& path, std::string_view contents) {
  using std::filesystem::file_type;
  std::error_code ignored;  // the calls below fail for the same reason
  const file_type type = std::filesystem::symlink_status(path, ignored).type();
  // To rename onto a device would remove it, and a link may have been meant to be followed.
  if (type != file_type::regular && type != file_type::not_found && type != file_type::none) {
    throw Failure(path + ": is not a regular file");
  }
  // Not made from the name of the file, which may be as long as names can be.
  const std::string temporary =
      path.substr(0, path.rfind('/') + 1) + ".hostutil-" + Utils::GenerateLowerUuid();
  const int descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor < 0) throw Failure(path + ": " + std::strerror(errno));
  int error = WriteAll(descriptor, contents) ? 0 : errno;
  if (::close(descriptor) != 0 && error == 0) error = errno;
  if (error == 0 && std::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
  if (error == 0) return;
  ::unlink(temporary.c_str());
  throw Failure(path + ": " + std::strerror(error));
}
