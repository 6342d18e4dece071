#include "common/utils/text.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <random>

namespace {

using Text = std::optional<std::string>;

// Takes a block over and gives its text, or nothing for null.
Text Take(char* block) {
  const std::unique_ptr<char, decltype(&std::free)> owner(block, &std::free);
  return block != nullptr ? Text(block) : Text();
}

TEST(ConcatStr, Joins) {
  EXPECT_EQ(Take(Utils::ConcatStr("dir", "/x")), "dir/x");
  EXPECT_EQ(Take(Utils::ConcatStr("", "")), "");
  EXPECT_EQ(Take(Utils::ConcatStr(nullptr, "x")), "x");
  EXPECT_EQ(Take(Utils::ConcatStr("x", nullptr)), "x");
}

// A text of `length` letters, for the rest of the process. Costs little: it is one small file, mapped over
// and over.
const char* LongText(std::size_t length) {
  constexpr std::size_t kPiece = std::size_t{16} << 20;
  std::FILE* const file = std::tmpfile();
  const std::size_t written = std::fwrite(std::string(kPiece, 'a').data(), 1, kPiece, file);
  EXPECT_EQ(written + static_cast<std::size_t>(std::fflush(file)), kPiece);
  auto* const text =
      static_cast<char*>(::mmap(nullptr, length + kPiece, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  for (char* at = text; at < text + length; at += kPiece) {
    EXPECT_EQ(at, ::mmap(at, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, ::fileno(file), 0));
  }
  text[length] = '\0';
  return text;
}

TEST(ConcatStr, RefusesWhatNoInt32CanMeasure) {
  constexpr std::size_t kLongest = 2'147'483'646;
  const char* const head = LongText(kLongest - 1);
  EXPECT_EQ(Utils::ConcatStr(head, "bc"), nullptr);
  EXPECT_EQ(Utils::ConcatStr(head, head), nullptr);
  char* const joined = Utils::ConcatStr(head, "b");
  ASSERT_NE(joined, nullptr);
  EXPECT_STREQ(joined + kLongest - 2, "ab");
  std::free(joined);
}

TEST(ReplaceChar, WritesTheSecondArgumentForTheThird) {
  EXPECT_EQ(Take(Utils::ReplaceChar("a.b.c", '/', '.')), "a/b/c");
  EXPECT_EQ(Take(Utils::ReplaceChar("a.b.c", '.', '/')), "a.b.c");
  EXPECT_EQ(Take(Utils::ReplaceChar("..", '.', '.')), "..");
  EXPECT_EQ(Take(Utils::ReplaceChar("ab", 'x', '\0')), "ab");
  EXPECT_EQ(Take(Utils::ReplaceChar("abc", '\0', 'b')), "a");
  EXPECT_EQ(Take(Utils::ReplaceChar("\xE9-", '-', '\xE9')), "--");
  EXPECT_EQ(Take(Utils::ReplaceChar(nullptr, 'a', 'b')), Text());
}

TEST(ReplaceStr, ReplacesInPlace) {
  const struct {
    std::string before;
    const char* search;
    const char* replacement;
    const char* after;
    std::int32_t count;
  } cases[] = {{"aa", "a", "ab", "abab", 2},   {"aaa", "aa", "b", "ba", 1}, {"abb", "ab", "a", "ab", 1},
               {"abc", "b", nullptr, "ac", 1}, {"abc", "", "y", "abc", 0},  {"abc", nullptr, "y", "abc", 0},
               {"ab", "abc", "x", "ab", 0},    {"", "a", "b", "", 0},       {"abab", "ab", "", "", 2},
               {"a.b.c", ".", "/", "a/b/c", 2}};
  for (const auto& c : cases) {
    std::string text = c.before;
    EXPECT_EQ(Utils::ReplaceStr(text, c.search, c.replacement), c.count) << c.before;
    EXPECT_EQ(text, c.after) << c.before;
  }
  std::string with_nul("a\0.b", 4);
  EXPECT_EQ(Utils::ReplaceStr(with_nul, ".", "--"), 1);
  EXPECT_EQ(with_nul, std::string("a\0--b", 5));
}

TEST(ReplaceStr, TakesArgumentsFromTheEditedString) {
  std::string text = "abab-b";
  EXPECT_EQ(Utils::ReplaceStr(text, text.c_str() + 5, "xyz"), 3);  // "b"
  EXPECT_EQ(text, "axyzaxyz-xyz");
  text = "a.b.cd";
  EXPECT_EQ(Utils::ReplaceStr(text, ".", text.c_str() + 4), 2);  // "cd"
  EXPECT_EQ(text, "acdbcdcd");
  EXPECT_EQ(Utils::ReplaceStr(text, text.c_str() + text.size(), "x"), 0);  // its own end
}

TEST(ReplaceStr, AgreesWithReplacingOneByOne) {
  std::mt19937 random(1);
  const auto text_of = [&random](std::size_t longest) {
    std::string text(random() % (longest + 1), 'a');
    for (char& letter : text) letter = static_cast<char>('a' + random() % 2);
    return text;
  };
  for (int round = 0; round < 3000; ++round) {
    std::string text = text_of(200), expected = text;
    const std::string search = "a" + text_of(5), replacement = text_of(8);
    std::int32_t count = 0;
    for (std::size_t at = 0; (at = expected.find(search, at)) != std::string::npos;
         at += replacement.size()) {
      expected.replace(at, search.size(), replacement);
      ++count;
    }
    ASSERT_EQ(Utils::ReplaceStr(text, search.c_str(), replacement.c_str()), count);
    ASSERT_EQ(text, expected) << search << " -> " << replacement;
  }
}

TEST(ReplaceStr, GrowsOnceAndOnlyAsFarAsNeeded) {
  std::string text(100'000, '.');
  Utils::ReplaceStr(text, ".", "ab");
  EXPECT_LE(text.capacity(), 200'000u);
  const char* const place = text.data();
  Utils::ReplaceStr(text, "ab", "c");
  EXPECT_EQ(text, std::string(100'000, 'c'));
  EXPECT_EQ(text.data(), place);
}

TEST(DeleteDelims, JoinsThePieces) {
  const struct {
    const char* text;
    const char* delimiters;
    const char* joiner;
    Text result;
  } cases[] = {{",a;b,,c;", ",;", "-", "a-b-c"},
               {",a;b,,c;", ",;", nullptr, "abc"},
               {"a,b,", ",", "", "ab"},
               {"a,b", ",", "<=>", "a<=>b"},
               {"abc", ",;", "-", "abc"},
               {",;,", ",;", "-", {}},
               {"", ",;", "-", {}},
               {"", "", "-", {}},
               {nullptr, ",;", "-", {}},
               {"a,b", "", "-", "a,b"},
               {"a,b", nullptr, "-", "a,b"},
               {"\xFF.", "\xFF", "-", "."}};
  for (const auto& c : cases) EXPECT_EQ(Take(Utils::DeleteDelims(c.text, c.delimiters, c.joiner)), c.result);
}

TEST(SplitWithFlag, AppendsEveryField) {
  using Fields = std::vector<std::string>;
  const struct {
    const char* text;
    char separator;
    Fields fields;
  } cases[] = {{"a,b,c", ',', {"a", "b", "c"}},
               {"a,,b", ',', {"a", "", "b"}},
               {",a", ',', {"", "a"}},
               {"a,", ',', {"a"}},
               {",", ',', {""}},
               {",,", ',', {"", ""}},
               {"abc", ',', {"abc"}},
               {"", ',', {}},
               {nullptr, ',', {}},
               {"a,b", '\0', {"a,b"}},
               {"\xFF.", '\xFF', {"", "."}}};
  for (const auto& c : cases) {
    Fields fields = {"kept"}, expected = c.fields;
    Utils::SplitWithFlag(c.text, c.separator, fields);
    expected.insert(expected.begin(), "kept");
    EXPECT_EQ(fields, expected) << testing::PrintToString(c.text);
  }
}

TEST(MemMem, FindsTheFirstPlace) {
  const char text[] = "abcabc\0\1\0\2";
  const struct {
    std::string_view pattern;
    const char* found;
  } cases[] = {{"bc", text + 1}, {"c", text + 2},         {"abcabc", text}, {"bcd", nullptr},
               {"ca", text + 2}, {{"\0\2", 2}, text + 8}, {"", nullptr},    {"abcabcabcab", nullptr}};
  for (const auto& c : cases) EXPECT_EQ(Utils::MemMem(text, 10, c.pattern.data(), c.pattern.size()), c.found);
  EXPECT_EQ(Utils::MemMem(nullptr, 0, nullptr, 0), nullptr);
  EXPECT_EQ(Utils::MemMem(nullptr, 0, nullptr, 1), nullptr);
}

// Every place of a match around the edges of the blocks that the search works in, in a buffer without a byte
// to spare.
TEST(MemMem, SeesEveryPlaceAndNotAByteMore) {
  for (const std::size_t size : {2u, 63u, 64u, 65u, 66u, 127u, 128u, 129u, 200u}) {
    for (const std::size_t length : {2u, 3u, 17u, 64u}) {
      for (std::size_t at = 0; at + length <= size; ++at) {
        std::vector<char> range(size, 'a');
        const std::string pattern = std::string(length - 1, 'a') + 'b';
        ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), nullptr);
        range[at + length - 1] = 'b';
        ASSERT_EQ(Utils::MemMem(range.data(), size, pattern.data(), length), range.data() + at)
            << size << ' ' << length;
      }
    }
  }
}

}  // namespace
