// Services that throw, and the stand-in's file service where it can do little.

#include <sys/stat.h>
#include <unistd.h>

#include "basic/services.h"
#include "support/every_function.h"
#include "support/services.h"
#include "support/temporary_folder.h"
#include "support/testing.h"

namespace fs = std::filesystem;

namespace {

using namespace Basic;

// How many more service calls there are until one throws.
int calls_left;

int Count() {
  return --calls_left == 0 ? throw std::domain_error("a service") : calls_left;
}

// The stand-in's services with that one call that throws.
struct Throwing final : IBasUtilityFile, IBasUtilityString {
  void CreateDirectory(const char* path) override { Count(), FileService()->CreateDirectory(path); }
  std::uint64_t GetFileSize(const char* path) override { return Count(), FileService()->GetFileSize(path); }
  std::FILE* OpenFile(const char* path, const char* mode) override {
    return Count(), FileService()->OpenFile(path, mode);
  }
  void FreeString(char* text) override { StringService()->FreeString(text), Count(); }
  char* DigestString(const char* text) override { return Count(), StringService()->DigestString(text); }
};

// What is left behind in memory is the leak sanitizer's to find.
TEST(Services, ThrowThroughEveryFunction) {
  const auto descriptors = [] { return std::distance(fs::directory_iterator("/dev/fd"), {}); };
  const auto open = descriptors();
  Throwing services;
  const ServiceOverride<IBasUtilityFile> file(&services);
  const ServiceOverride<IBasUtilityString> string(&services);
  int thrown = 0;
  for (const LibraryCall& each : EveryFunction()) {
    for (int at = 1; at <= 6; ++at) {
      calls_left = at;
      try {
        EXPECT_EQ(each.call(), each.result) << each.name;
      } catch (const std::domain_error&) {
        ++thrown;
      }
      EXPECT_EQ(descriptors(), open) << each.name;
    }
  }
  EXPECT_EQ(thrown, 13);
}

// The size of what is at `path`, and whether there is a folder after an attempt to make one.
std::string Try(const std::string& path) {
  const std::uint64_t size = FileService()->GetFileSize(path.c_str());
  FileService()->CreateDirectory(path.c_str());
  std::error_code ignored;
  return std::to_string(size) + (fs::is_directory(path, ignored) ? " folder" : "");
}

TEST(FileService, MeasuresReadableFilesAndMakesWhatFoldersItCan) {
  const TemporaryFolder folder;
  fs::create_symlink(folder.Write("file", "12345"), folder.Path("link"));
  fs::permissions(folder.Write("secret", "1"), fs::perms::none);
  ::mkfifo(folder.Path("pipe").c_str(), 0600);
  std::string longest = folder.Path("longest");
  longest.resize(PATH_MAX - 1, '/');
  EXPECT_EQ(Try(folder.Path("link")), "5");
  for (const std::string& path : {folder.Path("a"), folder.Path("b//c/"), folder.Path("d/../a"), longest})
    EXPECT_EQ(Try(path), "0 folder") << path;
  EXPECT_EQ(Try(folder.Path("secret")), ::geteuid() == 0 ? "1" : "0");
  for (const std::string& path : {longest + '/', folder.Path("pipe"), folder.Write("empty", ""),
                                  folder.Path("file/below"), std::string("/dev/zero"), std::string()})
    EXPECT_EQ(Try(path), "0") << path;
}

}  // namespace
