// Services that throw, and the stand-in's file service where there is little that it can do.

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

// The number of the service call that throws, counted down.
int calls_left;

void Count() {
  if (--calls_left == 0) throw std::domain_error("a service");
}

// The stand-in's services, one call of which throws.
struct Throwing final : IBasUtilityFile, IBasUtilityString {
  void CreateDirectory(const char* path) override { Count(), FileService()->CreateDirectory(path); }
  std::uint64_t GetFileSize(const char* path) override { return Count(), FileService()->GetFileSize(path); }
  std::FILE* OpenFile(const char* path, const char* mode) override {
    return Count(), FileService()->OpenFile(path, mode);
  }
  void FreeString(char* text) override { StringService()->FreeString(text), Count(); }
  char* DigestString(const char* text) override { return Count(), StringService()->DigestString(text); }
};

// The leak sanitizer finds memory that a throw left behind; this looks for open files.
TEST(Services, MayThrowInEveryFunction) {
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
  EXPECT_EQ(thrown, 16);  // each service call of every row, once
}

TEST(FileService, MeasuresReadableRegularFilesOnly) {
  const TemporaryFolder folder;
  fs::create_symlink(folder.Write("file", "12345"), folder.Path("link"));
  fs::permissions(folder.Write("secret", "1"), fs::perms::none);
  ::mkfifo(folder.Path("pipe").c_str(), 0600);
  const auto size = [](const std::string& path) { return FileService()->GetFileSize(path.c_str()); };
  EXPECT_EQ(size(folder.Path("file")), 5U);
  EXPECT_EQ(size(folder.Path("link")), 5U);
  EXPECT_EQ(size(folder.Path("secret")), ::geteuid() == 0 ? 1U : 0U);
  for (const std::string& path : {folder.Write("empty", ""), folder.Path("pipe"), folder.Path(),
                                  folder.Path("missing"), std::string("/dev/zero"), std::string()})
    EXPECT_EQ(size(path), 0U) << path;
}

TEST(FileService, MakesDirectoriesWithTheirParents) {
  const TemporaryFolder folder;
  std::string longest = folder.Path("longest");
  longest.resize(PATH_MAX - 1, '/');
  const std::string too_long = longest + '/', file = folder.Write("file", "");
  for (const std::string& path :
       {folder.Path("a"), folder.Path("a"), folder.Path("b//c/"), folder.Path("d/../a"), folder.Path("e/f/g"),
        longest, too_long, file, file + "/below", std::string()}) {
    FileService()->CreateDirectory(path.c_str());
    std::error_code ignored;
    EXPECT_EQ(fs::is_directory(path, ignored), path != too_long && !path.empty() && !path.starts_with(file))
        << path;
  }
}

TEST(FileService, DoesNothingWithANullPath) {
  FileService()->CreateDirectory(nullptr);
  EXPECT_EQ(FileService()->OpenFile(nullptr, "rb"), nullptr);
  EXPECT_EQ(FileService()->GetFileSize(nullptr), 0U);
}

}  // namespace
