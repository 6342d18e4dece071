#include "common/utils/matching.h"

#include <regex>

#include "support/testing.h"

namespace {

#ifdef __SANITIZE_THREAD__
constexpr std::size_t kSmallStack = 1024 << 10;  // this sanitizer's frames are more than twice as large
#else
constexpr std::size_t kSmallStack = 512 << 10;
#endif

namespace errors = std::regex_constants;
using Texts = std::vector<std::string>;

TEST(CompareI, FoldsAndOrdersBytes) {
  const Texts sorted = {"", "[", "_", "a", "AB", "abc", "ABD", "aZ", "B", "Z", "\xC3\x89", "\xC3\xA9"};
  for (const std::string& a : sorted)
    for (const std::string& b : sorted)
      EXPECT_TRUE((Utils::CompareI(a.c_str(), b.c_str()) <=> 0) == (&a <=> &b)) << a << ' ' << b;
  EXPECT_EQ(Utils::CompareI("Hello@Z", "hELLO@z"), 0);
  EXPECT_EQ(Utils::CompareI("ABC", "a"), 1);
  EXPECT_EQ(Utils::CompareI(nullptr, "abc"), -1);
}

TEST(StartWithAndEndWith, CompareBytes) {
  EXPECT_TRUE(Utils::StartWith("aba", "ab") && Utils::EndWith("aba", "ba") && Utils::EndWith("", ""));
  EXPECT_FALSE(Utils::StartWith("aba", "ba") || Utils::EndWith("aba", "ab") || Utils::EndWith("a", "aa"));
  EXPECT_FALSE(Utils::StartWith("", nullptr) || Utils::EndWith("", nullptr));
}

// What a match may come to, besides the code of an error.
enum { kYes = -1, kNo = -2 };

// The matched text goes over the pattern, which must stay as it was without a match.
int OutcomeOf(const std::string& text, const std::string& pattern) {
  std::string matched = pattern;
  int outcome = kNo;
  try {
    if (Utils::MatchString(text, matched, &matched)) outcome = kYes;
  } catch (const std::regex_error& error) {
    outcome = error.code();
  }
  EXPECT_EQ(matched, outcome == kYes ? text : pattern);
  return outcome;
}

TEST(MatchString, FailsWithTheFacilitysOwnError) {
  for (const char* pattern : {"a(b", "abc)", "*a", "^*", "(?=a)*", "a[b", "[b-a]", "[[:no:]]", "[[.no.]]",
                              "a{2,1}", "a{2", "{2}", "a\\", "\\x4", "\\c", "(a)\\2", "(a\\1)", "(?a)"}) {
    try {
      const std::regex regex(pattern);
      ADD_FAILURE() << pattern;
    } catch (const std::regex_error& error) {
      EXPECT_EQ(OutcomeOf("a", pattern), error.code()) << pattern;
      EXPECT_EQ(OutcomeOf("a", Times(1'000, "a") + "|" + pattern), error.code()) << pattern;
    }
  }
}

void MatchTexts() {
  const std::string a50k = Times(50'000, "a");
  const std::vector<std::tuple<int, std::string, Texts>> rows = {
      {kYes, {"a(\0", 3}, {{"a\\(\0", 4}}},
      {kYes, "aa-aa", {"a{2}.aa", "aa|aa-aa", "(a)a-aa", "(.*)-\\1", "(?=.*-)(?!.*\\s).+"}},
      {kNo, "aa-aa", {"", "aa", "aa-aaa", "AA-AA", "(a)-\\1"}},
      // Long enough to be regrouped before they are compiled.
      {kYes, Times(400, "a("), {Times(400, "a+[(\\]]"), Times(400, "\\x61{1}\\("), Times(400, "\\w.")}},
      {kNo, Times(400, "a(") + "a", {Times(400, "a+[(\\]]"), Times(400, "(a[(]|b)|")}},
      {kYes, "aab", {"(a)\\1(?:" + Times(700, "c|") + "b)", "(" + Times(400, "(?:b|[[:digit:]])|") + "a)*"}},
      // Close to the limits, and beyond them.
      {kYes, "aaa", {Times(200, "a?"), Times(80, "(") + "a*" + Times(80, ")"), Times(5'000, "b|") + "a*"}},
      {kYes, a50k, {"(a|b)*", "(?=.*a)(?:(?!foo).)*", Times(40, "(?=") + Times(40, ")") + "a*"}},
      {kNo, a50k, {"(a*)*b", "(a|aa)*b", "(.*)(.*)(.*)x", Times(20'000, "a")}},
      {errors::error_stack, a50k, {"(.*)\\1", "((a?){0,300}){0,300}", Times(100'000, "^")}},
      {errors::error_stack, "a", {Times(100'000, "("), Times(100'000, "(?="), Times(100'000, "a?")}},
      {errors::error_complexity, Times(24, "a"), {"(a*)*\\1b", "(b)?" + Times(40, "(|)") + "\\1x"}},
      {errors::error_complexity, Times(200, "a"), {".*.*" + Times(35, "(?=a)") + "c|x{99000}"}},
      {errors::error_space, "a", {"[" + Times(99, "[=a=]") + "]{99000}"}},
      {errors::error_space, "a", {Times(100'000, "b|"), "a{100001}", "a{99999999999999999999}"}},
      {errors::error_backref, "a", {"(a)\\99999999999999999999"}}};
  for (const auto& [expected, text, patterns] : rows)
    for (const std::string& pattern : patterns)
      EXPECT_EQ(OutcomeOf(text, pattern), expected) << pattern.substr(0, 40);
}

TEST(MatchString, MatchesWholeTextsOnASmallStack) {
  RunOnStack(kSmallStack, MatchTexts);
  EXPECT_TRUE(Utils::MatchString("", "", nullptr));
}

}  // namespace
