#include "common/utils/backup_layout.h"

#include "support/services.h"
#include "support/testing.h"

namespace {

// Notes every call; hands out one block, wipes it when it is freed.
struct Recording final : IBasUtilityString, IBasUtilityFile {
  void FreeString(char* text) override {
    calls += text == digest.data() ? " free" : " free of something else";
    digest.assign(digest.size(), '#');
  }
  char* DigestString(const char* text) override {
    calls += std::string("digest ") + text;
    return digest.data();
  }
  void CreateDirectory(const char* path) override { calls += path; }
  std::uint64_t GetFileSize(const char*) override { return calls += "size", 0; }
  std::FILE* OpenFile(const char*, const char*) override { return calls += "open", nullptr; }
  std::string calls, digest = "9F3AC0-and-more";
};

TEST(CalcFileID, CopiesTheDigestAndFreesItOnce) {
  const char* const cases[][3] = {{"A", "B/c", "digest A-B/c free"},
                                  {"", "", "digest - free"},
                                  {"a", "-b", "digest a--b free"},
                                  {nullptr, nullptr, "digest - free"}};
  for (const auto& [first, second, calls] : cases) {
    Recording strings;
    const ServiceOverride<IBasUtilityString> in_place(&strings);
    EXPECT_EQ(Utils::CalcFileID(first, second), "9F3AC0-and-more");
    EXPECT_EQ(strings.calls, calls);
    EXPECT_EQ(in_place.AccessorCalls(), 2);
  }
}

TEST(ConcatBackupFilePath, AddressesBothLayouts) {
  // The root, the identifier, the path, the folder that the two-level layout makes.
  const char* const cases[][4] = {{"/b/", "9f3a", "/b/9f3a", nullptr}, {"/b", "9f3a", "/b9f3a", nullptr},
                                  {"/b/", "", "/b//", "/b/"},          {"/b/", "9f3a", "/b/9f/9f3a", "/b/9f"},
                                  {nullptr, "9f3a", "9f/9f3a", "9f"},  {"/b/", "x", "/b/x/x", "/b/x"}};
  for (const auto& [root, id, path, made] : cases) {
    const bool two_level = made != nullptr;
    Recording files;
    const ServiceOverride<IBasUtilityFile> in_place(&files);
    EXPECT_EQ(Utils::ConcatBackupFilePath(root, id, two_level, false), path);
    EXPECT_EQ(Utils::ConcatBackupFilePath(root, id, two_level, true), path);
    EXPECT_EQ(in_place.AccessorCalls(), two_level ? 1 : 0);
    EXPECT_EQ(files.calls, two_level ? made : "");
  }
}

}  // namespace
