#include "common/utils/paths.h"

#include "platform/autorelease_pool.h"
#include "support/testing.h"

TEST(Paths, AreTakenApart) {
  const AutoreleasePool pool;
  const char* const cases[][5] = {{"c.txt", "", "c.txt", "c", "txt"},
                                  {"/a/c.txt", "/a/", "c.txt", "/a/c", "txt"},
                                  {"/a/b/", "/a/b/", "", "/a/b/", ""},
                                  {"/", "/", "", "/", ""},
                                  {"/a.d/b", "/a.d/", "b", "/a", ""},
                                  {"/a/.rc", "/a/", ".rc", "/a/", "rc"},
                                  {"//x", "//", "x", "//x", ""},
                                  {"a\\b/c", "a\\b/", "c", "a\\b/c", ""},
                                  {"file.", "", "file.", "file", ""},
                                  {"a\\b\\c.TXT", "", "c.TXT", "a\\b\\c", "TXT"},
                                  {"x.tar.gz", "", "x.tar.gz", "x.tar", "gz"},
                                  {nullptr, "", "", "", ""}};
  for (const auto& [path, parent, name, without_extension, extension] : cases) {
    SCOPED_TRACE(testing::PrintToString(path));
    EXPECT_EQ(Utils::GetParentDir(path), parent);
    EXPECT_EQ(Utils::GetFileName(path), name);
    EXPECT_EQ(Utils::GetFileNameWithoutExt(path), without_extension);
    EXPECT_EQ(Utils::GetFilePostfix(path), extension);
  }
}

// Valid names of 2, 3 and 4 bytes; truncated ones; overlong forms of "/"; a surrogate; two beyond U+10FFFF; a
// lone continuation byte.
TEST(GetParentDir, CutsTextsInAnyEncoding) {
  const AutoreleasePool pool;
  for (const std::string name :
       {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC0\xAF",
        "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80"})
    EXPECT_EQ(Utils::GetParentDir((name + "/" + name).c_str()), name + "/");
}

// Foundation takes a "/" and a combining mark for one character and drops a byte order mark at the start.
TEST(GetParentDir, FollowsThePlatformsStrings) {
#if defined(__APPLE__) || defined(HOSTUTIL_FOUNDATION)
  const char* const cases[][2] = {{"/a/b/\u0301c", "/a/"}, {"\uFEFFa/b", "a/"}};
#else
  const char* const cases[][2] = {{"/a/b/\u0301c", "/a/b/"}, {"\uFEFFa/b", "\uFEFFa/"}};
#endif
  const AutoreleasePool pool;
  for (const auto& [path, folder] : cases) EXPECT_EQ(Utils::GetParentDir(path), folder);
}

TEST(ConcatFilePath, AddsASlashOnlyAfterAFolderWithOneInside) {
  const char* const cases[][3] = {{"/a", "f", "/a/f"},   {"/a/", "f", "/a/f"},  {"a/b", "f", "a/b/f"},
                                  {"dir", "f", "dirf"},  {"", "f", "f"},        {"/", "f", "/f"},
                                  {"/a", "/f", "/a//f"}, {"/a", "", "/a/"},     {"a\\b", "f", "a\\bf"},
                                  {nullptr, "f", "f"},   {"/a", nullptr, "/a/"}};
  for (const auto& [directory, name, path] : cases)
    EXPECT_EQ(Take(Utils::ConcatFilePath(directory, name)), path);
}
