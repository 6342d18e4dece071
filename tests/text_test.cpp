#include "common/utils/text.h"

#include <strings.h>

#include <cctype>
#include <chrono>
#include <clocale>
#include <cstring>

#include "common/utils/matching.h"
#include "support/testing.h"

namespace {

using Text = std::optional<std::string>;
using Fields = std::vector<std::string>;

TEST(ConcatStr, JoinsUpToTheLongestInt32) {
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
  EXPECT_EQ(Take(Utils::ReplaceChar("ab", '/', '.')), "ab");
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
}

// Few and many matches, close together and far apart, to shorter, equal and longer texts.
TEST(ReplaceStr, ReplacesEveryMatchAtAnyDistance) {
  for (const std::size_t distance : {0u, 7u, 300u}) {
    for (const std::size_t matches : {1u, 256u, 257u, 600u}) {
      for (const std::string replacement : {"", "12345678", "<needles>"}) {
        const std::string between(distance, 'n');
        std::string text = Times(matches, between + "a needle") + between;
        EXPECT_EQ(Utils::ReplaceStr(text, "a needle", replacement.c_str()), matches);
        EXPECT_EQ(text, Times(matches, between + replacement) + between) << distance << ' ' << matches;
      }
    }
  }
}

TEST(ReplaceStr, AcceptsArgumentsInsideTheEditedString) {
  std::string text = "abab-b";
  Utils::ReplaceStr(text, &text[5], "xyz");
  EXPECT_EQ(text, "axyzaxyz-xyz");
  text = "a.b.cd";
  Utils::ReplaceStr(text, ".", &text[4]);
  EXPECT_EQ(text, "acdbcdcd");
}

TEST(ReplaceStr, GrowsOnceAndOnlyAsFarAsNeeded) {
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
  const std::tuple<const char*, char, Fields> cases[] = {{"a,b,c", ',', {"a", "b", "c"}},
                                                         {"a,,b", ',', {"a", "", "b"}},
                                                         {",a", ',', {"", "a"}},
                                                         {"a,", ',', {"a"}},
                                                         {",", ',', {""}},
                                                         {",,", ',', {"", ""}},
                                                         {"", ',', {}},
                                                         {nullptr, ',', {}},
                                                         {"a,b", '\0', {"a,b"}},
                                                         {"\xFF.", '\xFF', {"", "."}}};
  for (auto [text, separator, expected] : cases) {
    Fields fields = {"kept"};
    Utils::SplitWithFlag(text, separator, fields);
    expected.insert(expected.begin(), "kept");
    EXPECT_EQ(fields, expected);
  }
}

TEST(SplitWithFlag, AcceptsAFieldOfTheSameVector) {
  Fields fields = {"a,b"};
  Utils::SplitWithFlag(fields[0].c_str(), ',', fields);
  EXPECT_EQ(fields, (Fields{"a,b", "a", "b"}));
}

TEST(SplitWithFlag, MakesRoomOnce) {
  Fields fields;
  Utils::SplitWithFlag(std::string(1000, ',').c_str(), ',', fields);
  EXPECT_EQ(fields.capacity(), 1000U);
}

TEST(SplitWithFlag, MovesNothingWhileTheCapacityIsEnough) {
  for (const auto& [text, added] : {std::pair("", 0u), {"a,", 1u}, {"a", 1u}, {"a,b", 2u}}) {
    Fields fields = {"kept"};
    fields.reserve(fields.size() + added);
    const std::string* const before = fields.data();
    Utils::SplitWithFlag(text, ',', fields);
    EXPECT_EQ(fields.data(), before) << text;
  }
}

TEST(MemMem, FindsTheFirstMatch) {
  const char text[] = "abcabc\0\1\0\2";
  const struct {
    std::string_view pattern;
    const char* found;
  } cases[] = {{"bc", text + 1}, {"c", text + 2},         {"abcabc", text}, {"bcd", nullptr},
               {"ca", text + 2}, {{"\0\2", 2}, text + 8}, {"", nullptr},    {"abcabcabcab", nullptr}};
  for (const auto& [pattern, found] : cases)
    EXPECT_EQ(Utils::MemMem(text, 10, pattern.data(), pattern.size()), found) << pattern;
}

// Every place of a match around the edges of the blocks that the search works in, in a buffer without a byte
// to spare, after false matches that make it use each of its methods.
TEST(MemMem, FindsEveryPlaceAndReadsNoFurther) {
  for (const std::size_t size : {2u, 17u, 49u, 65u, 290u, 545u, 600u}) {
    for (const std::size_t length : {2u, 3u, 17u, 64u}) {
      for (const char filler : {'a', 'x'}) {
        for (std::size_t at = 0; at + length <= size; ++at) {
          std::vector<char> range(size, filler);
          const std::string pattern = std::string(length - 1, 'a') + 'b';
          ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), nullptr);
          std::copy(pattern.begin(), pattern.end(), range.begin() + static_cast<std::ptrdiff_t>(at));
          ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), range.data() + at);
        }
      }
    }
  }
}

// A length beyond every buffer: the caller knows that there is a match. A sanitizer sees what is read behind
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
    const std::string period = "aab";
    std::string text = Times(size / 3, period);
    std::string search = Times(size / 12, period);
    search[search.size() / 3 * 2] = 'c';
    text += search;  // the only match
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Utils::MemMem(text.data(), text.size(), search.data(), search.size()),
              text.data() + text.size() - search.size());
    EXPECT_EQ(Utils::ReplaceStr(text, search.c_str(), "x"), 1);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  const double once = seconds(200'000);
  EXPECT_LT(seconds(800'000), 6 * once + 0.1);
}

// Each byte against each in the locales of this machine. Turkish folds I otherwise; Latin, Greek and Cyrillic
// locales of one byte fold beyond ASCII; KOI8-R folds 0xFF, which as a signed char is EOF.
TEST(CompareI, FoldsAsTheLocaleDoes) {
  for (const char* locale : {"C", "C.UTF-8", "tr_TR.UTF-8", "tr_TR.ISO-8859-9", "ru_RU.KOI8-R"}) {
    if (std::setlocale(LC_ALL, locale) == nullptr) continue;
    // A sanitizer's strcasecmp folds ASCII in every locale.
    if (std::tolower('I') != 'i' && ::strcasecmp("I", "i") == 0) continue;
    const auto folded = [](int byte) { return std::tolower(static_cast<signed char>(byte)) & 0xFF; };
    for (int first = 1; first < 256; ++first) {
      for (int second = 1; second < 256; ++second) {
        const char one[] = {'x', static_cast<char>(first), '\0'};
        const char other[] = {'X', static_cast<char>(second), '\0'};
        const int order = Utils::CompareI(one, other);
        ASSERT_EQ(order < 0, folded(first) < folded(second)) << locale << ' ' << first << ' ' << second;
        ASSERT_EQ(order > 0, folded(first) > folded(second)) << locale << ' ' << first << ' ' << second;
      }
    }
  }
  std::setlocale(LC_ALL, "C");
}

}  // namespace
