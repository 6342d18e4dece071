#include "common/utils/matching.h"

#include <regex>

#include "common/utils/pattern.h"
#include "support/testing.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kSmallStack = 1024 << 10;  // instrumented frames are up to eight times as large
#else
constexpr std::size_t kSmallStack = 512 << 10;
#endif

enum Outcome { kYes = -1, kNo = -2 };  // or the code of a std::regex_error

int OutcomeOf(const std::string& text, const std::string& pattern) {
  std::string matched = "unchanged";
  int outcome = kNo;
  try {
    if (Utils::MatchString(text, pattern, &matched)) outcome = kYes;
  } catch (const std::regex_error& error) {
    outcome = error.code();
  }
  EXPECT_EQ(matched, outcome == kYes ? text : "unchanged");
  return outcome;
}

struct Row {
  int outcome;
  std::string text;
  std::vector<std::string> patterns;  // each gives the outcome
};

void Expect(const std::vector<Row>& rows) {
  for (const Row& row : rows)
    for (const std::string& pattern : row.patterns)
      EXPECT_EQ(OutcomeOf(row.text, pattern), row.outcome) << pattern.substr(0, 60);
}

TEST(MatchString, MatchesWholeTexts) {
  const std::string words = Times(100, "ab");
  using namespace std::regex_constants;
  Expect({
      {kYes, {"a(\0", 3}, {{"a\\(\0", 4}}},
      {kYes,
       "aa-aa",
       {"a{2}.aa", "aa|aa-aa", "(a)a-aa", "(.*)-\\1", "(?=.*-)(?!.*\\s).+", "[\\]()|[:alpha:]b]*-?aa"}},
      {kNo, "aa-aa", {"", "aa", "aa-aaa", "AA-AA", "(a)-\\1"}},
      {kYes, "aa", {Times(20, "(?:") + "a" + Times(20, ")*"), Times(20, "(") + "aa" + Times(20, ")")}},
      {kYes, "bb", {"(b)\\1" + Times(20, "a?"), Times(300, "a long word|") + "bb", "(?:|)(b)\\1"}},
      // The facility's own code for a bad pattern.
      {error_paren, "a", {"a(b", "(a", Times(50, "a") + "|a("}},
      {error_brack, "a", {"a[b"}},
      {kYes, words, {words, Times(100, "a*b?"), Times(100, "(ab*)?"), "(.*)\\1", "(/?[^/]{1,255}){0,10}"}},
  });
  EXPECT_TRUE(Utils::MatchString("", "", nullptr));
}

void MatchHostilePatterns() {
  using namespace std::regex_constants;
  const std::string a50k = Times(50'000, "a");
  Expect({
      {kYes, a50k, {"(a|b)*", "(?:(?!foo).)*", Times(40, "(?=") + Times(40, ")") + "a*"}},
      {error_stack,
       "a",
       {Times(1'000'000, "("), Times(10'000, "(?="), Times(9'000, "a?"), Times(9'000, "b|"),
        Times(9'000, "[(]")}},
      {error_stack, "a", {"(|){5000}", "(((a?){15}){15}){15}", Times(10'000, "(?:a") + Times(10'000, ")*")}},
      {error_space,
       "a",
       {"[" + Times(30'000, "a") + "]", "[a-z]{9999}", Times(20, Times(999, "b") + "|") + "a{9999}"}},
      // libstdc++'s own arithmetic would overflow.
      {error_space, "a", {"a{99999999999999999999}", "a{1,99999999999999999999}"}},
      {error_backref, "a", {"(a)\\99999999999999999999"}},
      // 2^32 + 10,000 and 2^32 + 1: libstdc++ 12 would truncate them, to a recursion that nothing bounds.
      {error_space, "a", {"(a?){4294977296}b", "(a?){1,4294977296}b"}},
      {error_backref, "aa", {"(a)\\4294967297"}},
      {kYes, "aa99999999999", {"a{2}99999999999", "a{1,2}99999999999", "aa\\x399999999999"}},
  });
#ifdef __GLIBCXX__  // libc++ refuses repeated repetitions, and has other bounds for texts
  EXPECT_EQ(OutcomeOf("aa", "a" + Times(10, "*")), kYes);
  EXPECT_EQ(OutcomeOf("a", "a" + Times(15'000, "*")), error_stack);
  for (const char* pattern : {"(a*)*b", "(a|aa)*b", "(.*)(.*)(.*)x"})
    EXPECT_EQ(OutcomeOf(a50k, pattern), kNo) << pattern;
  EXPECT_EQ(OutcomeOf(a50k, "(?=.*a)(?:(?!foo).)*"), kYes);
  const auto is_limit = [](int outcome) { return outcome == error_stack || outcome == error_complexity; };
  EXPECT_TRUE(is_limit(OutcomeOf(a50k, "(.*)\\1b")));
  // A reference to a group that took no part, after 2^40 ways to get there.
  EXPECT_EQ(OutcomeOf("a", "(b)?" + Times(40, "(?:|)") + "\\1x"), error_complexity);
  // Each look-ahead reads to the end.
  EXPECT_EQ(OutcomeOf(a50k, "(?:(?=.*a).)*"), error_complexity);
#endif
}

TEST(MatchString, EndsOnASmallStackWhateverThePattern) {
  RunOnStack(kSmallStack, MatchHostilePatterns);
}

TEST(Pattern, IsCompiledOnceForManyTexts) {
  Matching::Pattern pattern("(?:a|b)*c");
  EXPECT_TRUE(pattern.MatchesWhole("abac"));
  EXPECT_FALSE(pattern.MatchesWhole("abca"));
  EXPECT_TRUE(pattern.MatchesWhole(Times(50'000, "ab") + "c"));  // with the linear executor
  EXPECT_FALSE(pattern.MatchesWhole(Times(50'000, "ab")));
  EXPECT_TRUE(pattern.MatchesWhole("c"));
}

}  // namespace
