#include "common/utils/text.h"

#include <cstring>

#include "support/testing.h"

namespace {

using Text = std::optional<std::string>;

TEST(ConcatStr, JoinsWhatAnInt32CanMeasure) {
  EXPECT_EQ(Take(Utils::ConcatStr("dir", "/x")), "dir/x");
  EXPECT_EQ(Take(Utils::ConcatStr("", "")), "");
  EXPECT_EQ(Take(Utils::ConcatStr(nullptr, nullptr)), "");
  const std::string text(std::size_t{1} << 30, 'a');
  const char* const half = text.c_str() + 1;
  EXPECT_EQ(Utils::ConcatStr(half, text.c_str()), nullptr);
  char* const joined = Utils::ConcatStr(half, half);
  EXPECT_EQ(joined != nullptr ? std::strlen(joined) : 0, 2'147'483'646u);
  std::free(joined);
}

TEST(ReplaceChar, WritesTheSecondArgumentForTheThird) {
  EXPECT_EQ(Take(Utils::ReplaceChar("a.b.c", '/', '.')), "a/b/c");
  EXPECT_EQ(Take(Utils::ReplaceChar("ab", 'x', '\0')), "ab");
  EXPECT_EQ(Take(Utils::ReplaceChar("abc", '\0', 'b')), "a");
  EXPECT_EQ(Take(Utils::ReplaceChar(nullptr, 'a', 'b')), Text());
}

TEST(ReplaceStr, ReplacesInPlace) {
  const char* const cases[][4] = {{"aa", "a", "ab", "abab 2"}, {"aaa", "aa", "b", "ba 1"},
                                  {"abb", "ab", "a", "ab 1"},  {"abc", "b", nullptr, "ac 1"},
                                  {"abc", "", "y", "abc 0"},   {"abc", nullptr, "y", "abc 0"},
                                  {"ab", "abc", "x", "ab 0"},  {"abab", "ab", "", " 2"}};
  for (const auto& [before, search, replacement, after] : cases) {
    std::string text = before;
    const std::int32_t count = Utils::ReplaceStr(text, search, replacement);
    EXPECT_EQ(text + ' ' + std::to_string(count), after);
  }
}

TEST(ReplaceStr, TakesArgumentsFromTheEditedString) {
  std::string text = "abab-b", other = "a.b.cd";
  Utils::ReplaceStr(text, text.c_str() + 5, "xyz");  // "b"
  Utils::ReplaceStr(other, ".", other.c_str() + 4);  // "cd"
  EXPECT_EQ(text + ' ' + other, "axyzaxyz-xyz acdbcdcd");
}

TEST(ReplaceStr, GrowsOnceAndOnlyAsFarAsNeeded) {
  std::string text(100'000, '.');
  Utils::ReplaceStr(text, ".", "ab");
  EXPECT_LE(text.capacity(), 200'000U);
}

TEST(DeleteDelims, JoinsThePieces) {
  const char* const cases[][4] = {{",a;b,,c;", ",;", "-", "a-b-c"}, {",a;b,,c;", ",;", nullptr, "abc"},
                                  {"a,b,", ",", "", "ab"},          {"a,b", ",", "<=>", "a<=>b"},
                                  {",;,", ",;", "-", nullptr},      {"", "", "-", nullptr},
                                  {nullptr, ",;", "-", nullptr},    {"a,b", nullptr, "-", "a,b"},
                                  {"a,b", "", "-", "a,b"},          {"\xFF.", "\xFF", "-", "."}};
  for (const auto& [text, delimiters, joiner, result] : cases)
    EXPECT_EQ(Take(Utils::DeleteDelims(text, delimiters, joiner)), result != nullptr ? Text(result) : Text());
  EXPECT_EQ(Take(Utils::DeleteDelims("seventeen letters,b", ",", "-")), "seventeen letters-b");
}

TEST(SplitWithFlag, AppendsEveryField) {
  const char* const cases[][3] = {
      {"a,b,c", ",", "+a+b+c"}, {"a,,b", ",", "+a++b"},  {",a", ",", "++a"}, {"a,", ",", "+a"},
      {",", ",", "+"},          {",,", ",", "++"},       {"", ",", ""},      {nullptr, ",", ""},
      {"a,b", "", "+a,b"},      {"\xFF.", "\xFF", "++."}};
  for (const auto& [text, separator, expected] : cases) {
    std::vector<std::string> fields = {"kept"};
    Utils::SplitWithFlag(text, *separator, fields);
    std::string joined;
    for (const std::string& field : fields) joined += '+' + field;
    EXPECT_EQ(joined, std::string("+kept") + expected);
  }
  std::vector<std::string> own = {"a,b"};
  Utils::SplitWithFlag(own[0].c_str(), ',', own);
  EXPECT_EQ(own, (std::vector<std::string>{"a,b", "a", "b"}));
}

TEST(MemMem, FindsTheFirstPlace) {
  const char text[] = "abcabc\0\1\0\2";
  const std::pair<std::string_view, const char*> cases[] = {
      {"bc", text + 1}, {"c", text + 2},         {"abcabc", text}, {"bcd", nullptr},
      {"ca", text + 2}, {{"\0\2", 2}, text + 8}, {"", nullptr},    {"abcabcabcab", nullptr}};
  for (const auto& [pattern, found] : cases)
    EXPECT_EQ(Utils::MemMem(text, 10, pattern.data(), pattern.size()), found) << pattern;
}

// Every place of a match around the edges of the blocks that the search works in, in a buffer without a byte
// to spare.
TEST(MemMem, SeesEveryPlaceAndNotAByteMore) {
  for (const std::size_t size : {2u, 17u, 49u, 65u, 290u, 545u, 600u}) {
    for (const std::size_t length : {2u, 3u, 17u, 64u}) {
      for (std::size_t at = 0; at + length <= size; ++at) {
        std::vector<char> range(size, 'a');
        const std::string pattern = std::string(length - 1, 'a') + 'b';
        ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), nullptr);
        range[at + length - 1] = 'b';
        ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), range.data() + at);
      }
    }
  }
}

}  // namespace
