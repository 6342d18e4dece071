// Services that throw, and the stand-in's file service where it can do little.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "basic/services.h"
#include "support/every_function.h"
#include "support/services.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;

namespace {

// The stand-in's services, but call number `at` throws.
class Throwing final : public IBasUtilityFile, public IBasUtilityString, public IBasUtilitySys {
 public:
  explicit Throwing(int at) : left_(at) {}
  void CreateDirectory(const char* path) override { Count(), Basic::FileService()->CreateDirectory(path); }
  std::uint64_t GetFileSize(const char* path) override {
    return Count(), Basic::FileService()->GetFileSize(path);
  }
  std::FILE* OpenFile(const char* path, const char* mode) override {
    return Count(), Basic::FileService()->OpenFile(path, mode);
  }
  void FreeString(char* text) override { Basic::StringService()->FreeString(text), Count(); }
  char* DigestString(const char* text) override {
    return Count(), Basic::StringService()->DigestString(text);
  }
  bool IsLittleEndian() override { return Count(), Basic::SysService()->IsLittleEndian(); }

 private:
  void Count() {
    if (--left_ == 0) throw std::domain_error("a service");
  }
  int left_;
};

int OpenDescriptors() {
  int open = 0;
  for (int descriptor = 0; descriptor < 256; ++descriptor) open += ::fcntl(descriptor, F_GETFD) != -1 ? 1 : 0;
  return open;
}

// What is left behind in memory is the leak sanitizer's to find.
TEST(Services, ThrowThroughEveryFunction) {
  const int open = OpenDescriptors();
  int thrown = 0;
  for (const LibraryCall& each : EveryFunction()) {
    for (int at = 1;; ++at) {
      Throwing services(at);
      const ServiceOverride<IBasUtilityFile> file(&services);
      const ServiceOverride<IBasUtilityString> string(&services);
      const ServiceOverride<IBasUtilitySys> sys(&services);
      try {
        EXPECT_EQ(each.call(), each.result) << each.name;
        break;
      } catch (const std::domain_error&) {
        ++thrown;
      }
      EXPECT_EQ(OpenDescriptors(), open) << each.name;
    }
  }
  EXPECT_EQ(thrown, 18);
}

TEST(FileService, MeasuresReadableRegularFilesOnly) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "12345");
  fs::create_symlink(file, folder.Path("link"));
  fs::create_symlink(folder.Path("nowhere"), folder.Path("dangling"));
  fs::create_symlink(folder.Path("loop"), folder.Path("loop"));
  ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  const struct {
    std::string path;
    std::uint64_t size;
  } cases[] = {{file, 5},
               {folder.Path("link"), 5},
               {folder.Write("empty", ""), 0},
               {folder.Path(), 0},
               {folder.Path("pipe"), 0},
               {folder.Path("dangling"), 0},
               {folder.Path("loop"), 0},
               {file + "/below", 0},
               {folder.Path(std::string(PATH_MAX, 'x')), 0},
               {"/dev/zero", 0},
               {"", 0}};
  ::alarm(60);  // a pipe that is waited for ends the test
  for (const auto& c : cases) EXPECT_EQ(Basic::FileService()->GetFileSize(c.path.c_str()), c.size) << c.path;
  ::alarm(0);
}

// A path of exactly `length` bytes below `folder`.
std::string LongPath(const std::string& folder, std::size_t length) {
  std::string path = folder;
  while (path.size() + 202 < length) path += "/" + std::string(200, 'd');
  return path + "/" + std::string(length - path.size() - 1, 'd');
}

TEST(FileService, MakesWhatFoldersItCan) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "12345");
  const struct {
    std::string path;
    bool made;
  } cases[] = {{folder.Path("a"), true},
               {folder.Path("a"), true},
               {folder.Path("b/c/d"), true},
               {folder.Path("b//e/"), true},
               {folder.Path("f/../g"), true},
               {LongPath(folder.Path(), PATH_MAX - 1), true},
               {LongPath(folder.Path("too_long"), PATH_MAX), false},
               {folder.Path(std::string(NAME_MAX + 1, 'x')), false},
               {file, false},
               {file + "/below", false},
               {"", false}};
  for (const auto& c : cases) {
    Basic::FileService()->CreateDirectory(c.path.c_str());
    std::error_code ignored;
    EXPECT_EQ(fs::is_directory(c.path, ignored), c.made) << c.path;
  }
  EXPECT_EQ(ReadFile(file), "12345");
}

TEST(FileService, ObeysPermissions) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("closed", "12345");
  const std::string inside = folder.Path("new");
  ASSERT_EQ(::chmod(file.c_str(), 0), 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0555), 0);

  const pid_t child = ::fork();  // nothing is forbidden to root, so somebody else tries
  if (child == 0) {
    if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(3);
    const bool measured = Basic::FileService()->GetFileSize(file.c_str()) != 0;
    Basic::FileService()->CreateDirectory(inside.c_str());
    ::_exit((measured ? 1 : 0) + (::access(inside.c_str(), F_OK) == 0 ? 2 : 0));
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
}

}  // namespace
