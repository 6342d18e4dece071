#include "common/utils/text.h"

#include <strings.h>

#include <cctype>
#include <chrono>
#include <clocale>
#include <cstring>

#include "common/utils/matching.h"
#include "support/temporary_folder.h"
#include "support/testing.h"

namespace {

using Text = std::optional<std::string>;
using Fields = std::vector<std::string>;

TEST(ConcatStr, JoinsUpToTheLongestInt32) {
  EXPECT_EQ(Take(Utils::ConcatStr("dir", "/x")), "dir/x");
  EXPECT_EQ(Take(Utils::ConcatStr(nullptr, nullptr)), "");
  const std::string text(std::size_t{1} << 30, 'a');
  const char* const half = text.c_str() + 1;
  EXPECT_EQ(Utils::ConcatStr(half, text.c_str()), nullptr);
  // Not copied: under the thread sanitizer each byte takes five.
  const std::unique_ptr<char, decltype(&std::free)> longest(Utils::ConcatStr(half, half), &std::free);
  EXPECT_EQ(std::strlen(longest.get()), 2'147'483'646U);
}

TEST(ReplaceChar, WritesTheSecondArgumentForTheThird) {
  EXPECT_EQ(Take(Utils::ReplaceChar("a.b.c", '/', '.')), "a/b/c");
  EXPECT_EQ(Take(Utils::ReplaceChar("ab", 'x', '\0')), "ab");
  EXPECT_EQ(Take(Utils::ReplaceChar("abc", '\0', 'b')), "a");
  EXPECT_EQ(Take(Utils::ReplaceChar(nullptr, 'a', 'b')), Text());
}

TEST(ReplaceStr, ReplacesInPlace) {
  const std::tuple<std::string, const char*, const char*, const char*, int> cases[] = {
      {"aa", "a", "ab", "abab", 2},   {"aaa", "aa", "b", "ba", 1}, {"abb", "ab", "a", "ab", 1},
      {"abc", "b", nullptr, "ac", 1}, {"abc", "", "y", "abc", 0},  {"abc", nullptr, "y", "abc", 0},
      {"ab", "abc", "x", "ab", 0},    {"abab", "ab", "", "", 2},   {"a-a", "a", "bb", "bb-bb", 2}};
  for (auto [text, search, replacement, after, count] : cases) {
    EXPECT_EQ(Utils::ReplaceStr(text, search, replacement), count);
    EXPECT_EQ(text, after);
  }
  // Arguments inside the edited string.
  std::string text = "abab-b";
  Utils::ReplaceStr(text, &text[5], "xyz");
  EXPECT_EQ(text, "axyzaxyz-xyz");
  text = "a.b.cd";
  Utils::ReplaceStr(text, ".", &text[4]);
  EXPECT_EQ(text, "acdbcdcd");
}

// Few and many matches, close together and far apart, to shorter, equal and longer texts. Grows once, and
// only as far as needed.
TEST(ReplaceStr, ReplacesEveryMatchAtAnyDistance) {
  for (const std::size_t distance : {0u, 7u, 300u})
    for (const std::size_t matches : {1u, 256u, 257u, 600u})
      for (const std::string replacement : {"", "12345678", "<needles>"}) {
        const std::string between(distance, 'n');
        std::string text = Times(matches, between + "a needle") + between;
        EXPECT_EQ(Utils::ReplaceStr(text, "a needle", replacement.c_str()), matches);
        EXPECT_EQ(text, Times(matches, between + replacement) + between) << distance << ' ' << matches;
      }
  std::string text(100'000, '.');
  Utils::ReplaceStr(text, ".", "ab");
  EXPECT_LT(text.capacity(), 200'100U);
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
  // The fields that are expected, each with "|" after it.
  const char* const cases[][3] = {{"a,,b", ",", "a||b|"}, {",a", ",", "|a|"},  {"a,", ",", "a|"},
                                  {",", ",", "|"},        {",,", ",", "||"},   {"", ",", ""},
                                  {nullptr, ",", ""},     {"a,b", "", "a,b|"}, {"\xFF.", "\xFF", "|.|"}};
  for (const auto& [text, separator, expected] : cases) {
    Fields split = {"kept"};
    split.reserve(4);
    const std::string* const before = split.data();
    Utils::SplitWithFlag(text, *separator, split);
    EXPECT_EQ(split.data(), before) << "moved, although the capacity was enough";
    std::string joined;
    for (std::size_t at = 1; at < split.size(); ++at) joined += split[at] + '|';
    EXPECT_EQ(joined, expected);
  }
  Fields fields;
  Utils::SplitWithFlag(std::string(1000, ',').c_str(), ',', fields);
  EXPECT_EQ(fields.capacity(), 1000U);
  fields = {"a,b"};
  Utils::SplitWithFlag(fields[0].c_str(), ',', fields);
  EXPECT_EQ(fields, (Fields{"a,b", "a", "b"}));
}

TEST(MemMem, FindsTheFirstMatch) {
  const char text[] = "abcabc\0\1\0\2";
  const std::pair<std::string_view, const char*> cases[] = {
      {"bc", text + 1}, {"c", text + 2},         {"abcabc", text}, {"bcd", nullptr},
      {"ca", text + 2}, {{"\0\2", 2}, text + 8}, {"", nullptr},    {"abcabcabcab", nullptr}};
  for (const auto& [pattern, found] : cases)
    EXPECT_EQ(Utils::MemMem(text, 10, pattern.data(), pattern.size()), found) << pattern;
}

// The range ends where its block ends, for a sanitizer. Many false matches change the method of the search.
TEST(MemMem, FindsEveryPlaceAndReadsNoFurther) {
  for (const std::size_t size : {2u, 17u, 49u, 65u, 290u, 545u, 600u})
    for (const std::size_t length : {2u, 3u, 17u, 64u})
      for (const char filler : {'a', 'x'})
        for (std::size_t at = 0; at + length <= size; ++at) {
          std::vector<char> range(size, filler);
          const std::string pattern = std::string(length - 1, 'a') + 'b';
          ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), nullptr);
          std::copy(pattern.begin(), pattern.end(), range.begin() + static_cast<std::ptrdiff_t>(at));
          ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), range.data() + at);
        }
}

// A length beyond every buffer: the caller knows that there is a match. A sanitizer sees what is read after
// it.
TEST(MemMem, StopsAtTheMatchWhateverTheLength) {
  EXPECT_STREQ(static_cast<const char*>(Utils::MemMem("abcabc", ULONG_MAX, "bc", 2)), "bcabc");
  std::vector<char> range(700, 'a');
  range.back() = 'b';
  EXPECT_EQ(Utils::MemMem(range.data(), ULONG_MAX, "aab", 3), &range[697]);
}

// Four times the text takes some four times as long; a quadratic search would take sixteen times, a second.
TEST(Searches, TakeLinearTime) {
  const auto seconds = [](std::size_t size) {
    std::string search = Times(size / 12, "aab");
    search[search.size() / 3 * 2] = 'c';
    std::string text = Times(size / 3, "aab") + search;  // the only match
    const auto start = std::chrono::steady_clock::now();
    EXPECT_NE(Utils::MemMem(text.data(), text.size(), search.data(), search.size()), nullptr);
    EXPECT_EQ(Utils::ReplaceStr(text, search.c_str(), "x"), 1);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  const double once = seconds(200'000);
  EXPECT_LT(seconds(800'000), 6 * once + 0.1);
}

// Turkish folds I otherwise; KOI8-R folds beyond ASCII, and 0xFF, which as a signed char is EOF.
TEST(CompareI, FoldsAsTheLocaleDoes) {
  const TemporaryFolder folder;
  ::setenv("LOCPATH", folder.Path().c_str(), 1);
  int tested = 0;
  for (const std::string locale : {"C", "tr_TR.UTF-8", "tr_TR.ISO-8859-9", "ru_RU.KOI8-R"}) {
    const std::string make =
        "localedef -i " + locale.substr(0, 5) + " -f " + locale.substr(locale.find('.') + 1);
    static_cast<void>(std::system((make + " '" + folder.Path(locale) + "' >/dev/null 2>&1").c_str()));
    if (std::setlocale(LC_ALL, locale.c_str()) == nullptr) continue;
    // A sanitizer's strcasecmp folds ASCII in every locale.
    if (std::tolower('I') != 'i' && ::strcasecmp("I", "i") == 0) continue;
    ++tested;
    const auto folded = [](char byte) { return std::tolower(static_cast<signed char>(byte)) & 0xFF; };
    for (char one[] = "x\1"; one[1] != '\0'; ++one[1])
      for (char other[] = "X\1"; other[1] != '\0'; ++other[1]) {
        const int order = Utils::CompareI(one, other), expected = folded(one[1]) - folded(other[1]);
        ASSERT_EQ((order > 0) - (order < 0), (expected > 0) - (expected < 0)) << locale << one << other;
      }
  }
  std::setlocale(LC_ALL, "C");
  if (tested == 1) GTEST_SKIP() << "there is no locale but C, or a sanitizer folds";
}

}  // namespace
