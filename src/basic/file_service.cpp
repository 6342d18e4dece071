#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "basic/services.h"

namespace {

class FileService final : public IBasUtilityFile {
 public:
  // Makes missing parents too, once the directory itself has turned out to need them. Works in a buffer on
  // the stack, so that nothing here can throw.
  void CreateDirectory(const char* path) override {
    if (path == nullptr || ::mkdir(path, kDirectoryMode) == 0 || errno != ENOENT) return;
    char partial[PATH_MAX];
    const std::size_t length = std::strlen(path);
    if (length == 0 || length >= sizeof partial) return;
    std::memcpy(partial, path, length + 1);
    for (char* slash = std::strchr(partial + 1, '/'); slash != nullptr; slash = std::strchr(slash + 1, '/')) {
      *slash = '\0';
      ::mkdir(partial, kDirectoryMode);
      *slash = '/';
    }
    ::mkdir(partial, kDirectoryMode);
  }

  // Opens nothing: opening a pipe or a device can block or have side effects.
  std::uint64_t GetFileSize(const char* path) override {
    struct stat status {};
    if (path == nullptr || ::stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return ::access(path, R_OK) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

  std::FILE* OpenFile(const char* path, const char* mode) override {
    return path != nullptr ? std::fopen(path, mode) : nullptr;
  }

 private:
  static constexpr mode_t kDirectoryMode = 0777;  // less the process's umask
};

constinit FileService service;

}  // namespace

IBasUtilityFile* Basic::FileService() {
  return &service;
}
