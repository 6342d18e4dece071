#include "common/utils/paths.h"

#include "platform/autorelease_pool.h"
#include "support/testing.h"

TEST(Paths, AreTakenApart) {
  const AutoreleasePool pool;
  // The folder, the name, the path without its extension, the extension.
  const char* const cases[][2] = {{"c.txt", "|c.txt|c|txt"},     {"/a/c.txt", "/a/|c.txt|/a/c|txt"},
                                  {"/a/b/", "/a/b/||/a/b/|"},    {"/", "/||/|"},
                                  {"/a.d/b", "/a.d/|b|/a|"},     {nullptr, "|||"},
                                  {"/a/.rc", "/a/|.rc|/a/|rc"},  {"//x", "//|x|//x|"},
                                  {"a\\b/c", "a\\b/|c|a\\b/c|"}, {"a\\b\\c.TXT", "|c.TXT|a\\b\\c|TXT"},
                                  {"file.", "|file.|file|"},     {"x.tar.gz", "|x.tar.gz|x.tar|gz"}};
  for (const auto& [path, parts] : cases) {
    EXPECT_EQ(Utils::GetParentDir(path) + '|' + Utils::GetFileName(path) + '|' +
                  Utils::GetFileNameWithoutExt(path) + '|' + Utils::GetFilePostfix(path),
              parts);
  }
}

// After three characters of several bytes, each ends in a way that UTF-8 forbids: cut short, overlong, a
// surrogate, beyond the last character, a stray byte.
TEST(GetParentDir, CutsAnyText) {
  const AutoreleasePool pool;
  for (const std::string tail :
       {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC0\xAF",
        "\xE0\x80\xAF", "\xED\xA0\x80", "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80"})
    EXPECT_EQ(Utils::GetParentDir((tail + "/" + tail).c_str()), tail + "/");
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

TEST(ConcatFilePath, PutsASlashOnlyBehindAFolderThatHasOneInside) {
  const char* const cases[][3] = {{"/a", "f", "/a/f"},   {"/a/", "f", "/a/f"},  {"a/b", "f", "a/b/f"},
                                  {"dir", "f", "dirf"},  {"", "f", "f"},        {"/", "f", "/f"},
                                  {"/a", "/f", "/a//f"}, {"/a", "", "/a/"},     {"a\\b", "f", "a\\bf"},
                                  {nullptr, "f", "f"},   {"/a", nullptr, "/a/"}};
  for (const auto& [directory, name, expected] : cases)
    EXPECT_EQ(Take(Utils::ConcatFilePath(directory, name)), expected);
}
