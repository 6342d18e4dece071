#include "common/utils/backup_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/services.h"
#include "support/temporary_folder.h"

namespace {

using testing::ElementsAre;

// Notes every call; hands out one block, wipes it when it is freed.
class RecordingStrings final : public IBasUtilityString {
 public:
  void FreeString(char* text) override {
    calls.push_back(text == digest_.data() ? "free" : "free of something else");
    digest_.assign(digest_.size(), '#');
  }
  char* DigestString(const char* text) override {
    calls.push_back(std::string("digest ") + text);
    return digest_.data();
  }
  std::vector<std::string> calls;

 private:
  std::string digest_ = "9F3AC0-and-more";
};

class RecordingFiles final : public IBasUtilityFile {
 public:
  void CreateDirectory(const char* path) override { created.push_back(path); }
  std::uint64_t GetFileSize(const char*) override { throw std::logic_error("not to be called"); }
  std::FILE* OpenFile(const char*, const char*) override { throw std::logic_error("not to be called"); }
  std::vector<std::string> created;
};

TEST(CalcFileID, CopiesTheDigestAndFreesItOnce) {
  const struct {
    const char* first;
    const char* second;
    const char* call;
  } cases[] = {{"A", "B/c", "digest A-B/c"}, {"", "", "digest -"},        {"a-", "b", "digest a--b"},
               {"a", "-b", "digest a--b"},   {nullptr, "b", "digest -b"}, {"a", nullptr, "digest a-"}};
  for (const auto& c : cases) {
    RecordingStrings strings;
    const ServiceOverride<IBasUtilityString> in_place(&strings);
    EXPECT_EQ(Utils::CalcFileID(c.first, c.second), "9F3AC0-and-more");
    EXPECT_THAT(strings.calls, ElementsAre(c.call, "free"));
    EXPECT_EQ(in_place.AccessorCalls(), 2);
  }
}

// As `printf %s HomeDomain-Library/Preferences/com.example.plist | sha1sum` prints it.
TEST(CalcFileID, IsALowerCaseSha1WithTheStandInService) {
  EXPECT_EQ(Utils::CalcFileID("HomeDomain", "Library/Preferences/com.example.plist"),
            "0a6add080123e69c8052f33fa2b8d1a3f541bb52");
}

TEST(ConcatBackupFilePath, AddressesBothLayouts) {
  const struct {
    const char* root;
    const char* id;
    bool two_level;
    const char* path;
    const char* bucket;
  } cases[] = {{"/b/", "9f3ac0", false, "/b/9f3ac0", nullptr},
               {"/b", "9f3ac0", false, "/b9f3ac0", nullptr},
               {"/b/", "9f3ac0", true, "/b/9f/9f3ac0", "/b/9f"},
               {"", "9f3ac0", true, "9f/9f3ac0", "9f"},
               {"/b/", "x", true, "/b/x/x", "/b/x"},
               {"/b/", "", true, "/b//", "/b/"},
               {nullptr, "ab", true, "ab/ab", "ab"},
               {"/b/", nullptr, false, "/b/", nullptr}};
  for (const auto& c : cases) {
    RecordingFiles files;
    const ServiceOverride<IBasUtilityFile> in_place(&files);
    EXPECT_EQ(Utils::ConcatBackupFilePath(c.root, c.id, c.two_level, false), c.path);
    EXPECT_EQ(in_place.AccessorCalls(), 0);
    EXPECT_EQ(Utils::ConcatBackupFilePath(c.root, c.id, c.two_level, true), c.path);
    EXPECT_EQ(in_place.AccessorCalls(), c.bucket != nullptr ? 1 : 0);
    EXPECT_EQ(files.created,
              c.bucket != nullptr ? std::vector<std::string>{c.bucket} : std::vector<std::string>{});
  }
}

TEST(ConcatBackupFilePath, SaysNothingOfAFolderThatCannotBeMade) {
  const TemporaryFolder folder;
  const std::string in_the_way = folder.Write("file", "") + "/";
  EXPECT_EQ(Utils::ConcatBackupFilePath(in_the_way.c_str(), "9f3ac0", true, true), in_the_way + "9f/9f3ac0");
  const std::string root = folder.Path("new/");
  Utils::ConcatBackupFilePath(root.c_str(), "9f3ac0", true, true);
  EXPECT_TRUE(std::filesystem::is_directory(root + "9f"));
}

}  // namespace
