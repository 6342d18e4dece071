#include "common/utils/paths.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/autorelease_pool.h"

namespace {

struct Path {
  const char* path;
  const char* parent;
  const char* name;
  const char* without_extension;
  const char* extension;
};

const Path kPaths[] = {
    {"/a/b/c.txt", "/a/b/", "c.txt", "/a/b/c", "txt"},
    {"c.txt", "", "c.txt", "c", "txt"},
    {"/a/b/", "/a/b/", "", "/a/b/", ""},
    {"/", "/", "", "/", ""},
    {"", "", "", "", ""},
    {"/a.d/b", "/a.d/", "b", "/a", ""},
    {"/a/.profile", "/a/", ".profile", "/a/", "profile"},
    {"a\\b\\c.TXT", "", "c.TXT", "a\\b\\c", "TXT"},
    {"a\\b/c", "a\\b/", "c", "a\\b/c", ""},
    {"a/b\\c", "a/", "c", "a/b\\c", ""},
    {"x.tar.gz", "", "x.tar.gz", "x.tar", "gz"},
    {"file.", "", "file.", "file", ""},
    {"//x", "//", "x", "//x", ""},
    {"/\xC3\xA9/\xF0\x9F\x98\x80.b", "/\xC3\xA9/", "\xF0\x9F\x98\x80.b", "/\xC3\xA9/\xF0\x9F\x98\x80", "b"},
    {nullptr, "", "", "", ""}};

TEST(Paths, AreTakenApart) {
  const AutoreleasePool pool;
  for (const Path& p : kPaths) {
    EXPECT_EQ(Utils::GetParentDir(p.path), p.parent);
    EXPECT_EQ(Utils::GetFileName(p.path), p.name);
    EXPECT_EQ(Utils::GetFileNameWithoutExt(p.path), p.without_extension);
    EXPECT_EQ(Utils::GetFilePostfix(p.path), p.extension);
  }
}

// Each ends in a way that UTF-8 forbids: cut short, overlong, a surrogate, beyond the last character, a stray
// byte.
TEST(GetParentDir, CutsTextThatIsNoUtf8) {
  const AutoreleasePool pool;
  for (const char* tail : {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80",
                           "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80", "\xFF"}) {
    EXPECT_EQ(Utils::GetParentDir((std::string("/a/") + tail).c_str()), "/a/");
    EXPECT_EQ(Utils::GetParentDir((std::string(tail) + "/b").c_str()), std::string(tail) + "/");
    EXPECT_EQ(Utils::GetParentDir(tail), "");
  }
}

TEST(ConcatFilePath, PutsASlashOnlyBehindAFolderThatHasOneInside) {
  const struct {
    const char* directory;
    const char* name;
    const char* joined;
  } cases[] = {{"/a", "f", "/a/f"},    {"/a/", "f", "/a/f"}, {"a/b", "f", "a/b/f"}, {"dir", "f", "dirf"},
               {"", "f", "f"},         {"/", "f", "/f"},     {"/a", "/f", "/a//f"}, {"/a", "", "/a/"},
               {"a\\b", "f", "a\\bf"}, {nullptr, "f", "f"},  {"/a", nullptr, "/a/"}};
  for (const auto& c : cases) {
    char* const joined = Utils::ConcatFilePath(c.directory, c.name);
    EXPECT_STREQ(joined, c.joined);
    std::free(joined);
  }
}

TEST(GetFileCreateTime, HasNoAnswer) {
  EXPECT_EQ(Utils::GetFileCreateTime("/", nullptr), "");
}

}  // namespace
