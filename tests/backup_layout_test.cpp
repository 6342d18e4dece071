#include "common/utils/backup_layout.h"

#include "support/services.h"
#include "support/testing.h"

namespace {

using Calls = std::vector<std::string>;

// Records every call. Hands out one block as the digest and overwrites it when it is freed.
struct Recording final : IBasUtilityString, IBasUtilityFile {
  void FreeString(char* text) override {
    calls.push_back(text == digest.data() ? "free" : "free of another block");
    digest.assign(digest.size(), '#');
  }
  char* DigestString(const char* text) override {
    calls.push_back(std::string("digest ") + text);
    return digest.data();
  }
  void CreateDirectory(const char* path) override {
    calls.push_back(std::string("create ") + path);
    if (overwritten != nullptr) overwritten->assign(overwritten->size(), '#');
  }
  std::uint64_t GetFileSize(const char*) override { return calls.push_back("size"), 0; }
  std::FILE* OpenFile(const char*, const char*) override { return calls.push_back("open"), nullptr; }
  Calls calls;
  std::string digest = "9F3AC0-and-more";
  std::string* overwritten = nullptr;  // by CreateDirectory
};

TEST(CalcFileID, CopiesTheDigestAndFreesItOnce) {
  const char* const cases[][3] = {{"A", "B/c", "digest A-B/c"},
                                  {"", "", "digest -"},
                                  {"a", "-b", "digest a--b"},
                                  {nullptr, nullptr, "digest -"}};
  for (const auto& [first, second, call] : cases) {
    Recording strings;
    const ServiceOverride<IBasUtilityString> in_place(&strings);
    EXPECT_EQ(Utils::CalcFileID(first, second), "9F3AC0-and-more");
    EXPECT_EQ(strings.calls, (Calls{call, "free"}));
    EXPECT_EQ(in_place.AccessorCalls(), 2);
  }
}

TEST(ConcatBackupFilePath, AddressesBothLayouts) {
  // The folder is null for the flat layout.
  const char* const cases[][4] = {{"/b/", "9f3a", "/b/9f3a", nullptr}, {"/b", "9f3a", "/b9f3a", nullptr},
                                  {"/b/", nullptr, "/b/", nullptr},    {"/b/", "9f3a", "/b/9f/9f3a", "/b/9f"},
                                  {"/b/", "", "/b//", "/b/"},          {"/b/", "x", "/b/x/x", "/b/x"},
                                  {nullptr, "9f3a", "9f/9f3a", "9f"}};
  for (const auto& [root, id, path, folder] : cases) {
    Recording files;
    const ServiceOverride<IBasUtilityFile> in_place(&files);
    EXPECT_EQ(Utils::ConcatBackupFilePath(root, id, folder != nullptr, false), path);
    EXPECT_EQ(files.calls, Calls());
    std::string own = id != nullptr ? id : "";  // which the service overwrites
    files.overwritten = &own;
    EXPECT_EQ(Utils::ConcatBackupFilePath(root, id != nullptr ? own.c_str() : id, folder != nullptr, true),
              path);
    EXPECT_EQ(files.calls, folder != nullptr ? Calls{std::string("create ") + folder} : Calls());
    EXPECT_EQ(in_place.AccessorCalls(), folder != nullptr ? 1 : 0);
  }
}

}  // namespace
