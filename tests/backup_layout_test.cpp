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
  const struct {
    const char *first, *second, *digested;
  } cases[] = {{"A", "B/c", "digest A-B/c"},
               {"", "", "digest -"},
               {"a", "-b", "digest a--b"},
               {nullptr, nullptr, "digest -"}};
  for (const auto& c : cases) {
    Recording strings;
    const ServiceOverride<IBasUtilityString> in_place(&strings);
    EXPECT_EQ(Utils::CalcFileID(c.first, c.second), "9F3AC0-and-more");
    EXPECT_EQ(strings.calls, (Calls{c.digested, "free"}));
    EXPECT_EQ(in_place.AccessorCalls(), 2);
  }
}

TEST(ConcatBackupFilePath, AddressesBothLayouts) {
  const struct {
    const char *root, *id;
    bool two_level;
    const char* path;
    Calls create;
  } cases[] = {{"/b/", "9f3a", false, "/b/9f3a", {}},
               {"/b", "9f3a", false, "/b9f3a", {}},
               {"/b/", "9f3a", true, "/b/9f/9f3a", {"create /b/9f"}},
               {"/b/", "", true, "/b//", {"create /b/"}},
               {"/b/", "x", true, "/b/x/x", {"create /b/x"}},
               {nullptr, "9f3a", true, "9f/9f3a", {"create 9f"}},
               {"/b/", nullptr, false, "/b/", {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    Recording files;
    const ServiceOverride<IBasUtilityFile> in_place(&files);
    EXPECT_EQ(Utils::ConcatBackupFilePath(c.root, c.id, c.two_level, false), c.path);
    EXPECT_EQ(files.calls, Calls());
    EXPECT_EQ(Utils::ConcatBackupFilePath(c.root, c.id, c.two_level, true), c.path);
    EXPECT_EQ(files.calls, c.create);
    EXPECT_EQ(in_place.AccessorCalls(), static_cast<int>(c.create.size()));
  }
}

TEST(ConcatBackupFilePath, CopiesTheIdentifierBeforeItCallsTheService) {
  std::string id = "9f3a";
  Recording files;
  files.overwritten = &id;
  const ServiceOverride<IBasUtilityFile> in_place(&files);
  EXPECT_EQ(Utils::ConcatBackupFilePath("/b/", id.c_str(), true, true), "/b/9f/9f3a");
}

}  // namespace
