#include "common/utils/matching.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <clocale>
#include <cstdlib>
#include <regex>
#include <string>

#include "common/utils/pattern_limits.h"
#include "support/temporary_folder.h"

namespace {

namespace errors = std::regex_constants;

int Sign(int value) {
  return (value > 0) - (value < 0);
}

TEST(CompareI, FoldsAndOrdersBytes) {
  const struct {
    const char* first;
    const char* second;
    int sign;
    bool is_prefix;
  } rows[] = {
      {"Hello", "hELLO", 0, true}, {"", "", 0, true},
      {nullptr, "", 0, true},      {nullptr, "a", -1, true},
      {"ab", "abc", -1, true},     {"ABC", "ab", 1, true},
      {"abc", "ABD", -1, false},   {"Z", "[", 1, false},
      {"_", "a", -1, false},       {"\xC3\xA9", "\xC3\x89", 1, false},
      {"a", "\xE9", -1, false},    {"a\x80", "A", 1, true},
      {"b", "Az", 1, false},
  };
  for (const auto& row : rows) {
    const int forth = Utils::CompareI(row.first, row.second);
    const int back = Utils::CompareI(row.second, row.first);
    EXPECT_EQ(row.is_prefix ? forth : Sign(forth), row.sign) << row.first << ' ' << row.second;
    EXPECT_EQ(row.is_prefix ? back : Sign(back), -row.sign) << row.first << ' ' << row.second;
  }
}

TEST(CompareI, FollowsTheLocaleBeyondAscii) {
  const TemporaryFolder folder;
  const std::string make = "localedef -c -i en_US -f ISO-8859-1 '" + folder.Path("latin1") + "' 2>&1";
  const int made = std::system(make.c_str());  // NOLINT(cert-env33-c)
  setenv("LOCPATH", folder.Path().c_str(), 1);
  const bool available = made == 0 && std::setlocale(LC_CTYPE, "latin1") != nullptr;
  if (!available) {
    unsetenv("LOCPATH");
    GTEST_SKIP() << "no 8-bit locale can be made here";
  }
  EXPECT_EQ(Utils::CompareI("\xC9t\xC9", "\xE9T\xE9"), 0);
  EXPECT_GT(Utils::CompareI("\xC9", "z"), 0);
  EXPECT_LT(Utils::CompareI("\xC9", "\xEA"), 0);
  // 0xFF as a signed char is the value of EOF.
  EXPECT_EQ(Utils::CompareI("\xFF", "\xFF"), 0);
  std::setlocale(LC_CTYPE, "C");
  unsetenv("LOCPATH");
  EXPECT_NE(Utils::CompareI("\xC9", "\xE9"), 0);
}

TEST(StartWithAndEndWith, CompareBytes) {
  const struct {
    std::string text;
    const char* part;
    bool starts, ends;
  } rows[] = {
      {"abc", "ab", true, false},      {"abc", "bc", false, true},     {"abcabc", "bc", false, true},
      {"abab", "ab", true, true},      {"abc", "abc", true, true},     {"ab", "abc", false, false},
      {"abc", "", true, true},         {"", "", true, true},           {"", "a", false, false},
      {"abc", nullptr, false, false},  {"Abc", "ab", false, false},    {{"a\0b", 3}, "a", true, false},
      {{"a\0b", 3}, "b", false, true}, {{"a\0", 2}, "a", true, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Utils::StartWith(row.text, row.part), row.starts) << row.text;
    EXPECT_EQ(Utils::EndWith(row.text, row.part), row.ends) << row.text;
  }
}

std::string Times(std::size_t count, const std::string& text) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

constexpr int kNo = 0;
constexpr int kYes = 1;
constexpr int kError = 100;

template <typename Match>
int Outcome(Match match) {
  try {
    return match() ? kYes : kNo;
  } catch (const std::regex_error& error) {
    return kError + error.code();
  }
}

// What MatchString makes of it, having checked that it writes the text on a match and nothing otherwise.
int OutcomeOf(const std::string& text, const std::string& pattern) {
  std::string matched = "before";
  const int outcome = Outcome([&] { return Utils::MatchString(text, pattern, &matched); });
  EXPECT_EQ(matched, outcome == kYes ? text : "before");
  return outcome;
}

TEST(MatchString, MatchesTheWholeText) {
  const struct {
    std::string text, pattern;
    int outcome;
  } rows[] = {
      {"abc", "a.c", kYes},
      {"abcd", "a.c", kNo},
      {"ABC", "abc", kNo},
      {"x1", "x(\\d)", kYes},
      {"", "", kYes},
      {"abc", "", kNo},
      {"ab", "a|ab", kYes},
      {"a(b", "a\\(b", kYes},
      {"a\nb", "a.b", kNo},
      {{"a\0b", 3}, "a[^x]b", kYes},
      {{"a\0b", 3}, {"a\0b", 3}, kYes},
      {"abab", "(ab)\\1", kYes},
      {"abac", "(ab)\\1", kNo},
      {"a]", "[[:alpha:]][\\]]", kYes},
      {"Pass1", "(?=.*\\d)(?!.*\\s)\\w+", kYes},
      {"x", "(((((((a)?b)?c)?d)?e)?f)?g)?x", kYes},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(OutcomeOf(row.text, row.pattern), row.outcome) << row.pattern;
  }
  EXPECT_TRUE(Utils::MatchString("a", "a", nullptr));
}

TEST(MatchString, FailsWithTheFacilitysOwnError) {
  for (const char* pattern :
       {"a(b",           "abc)",          "*a",        "(*)",    "^*",     "(?=a)*", "a[b", "[b-a]",
        "[[:nothing:]]", "[[.nothing.]]", "[\\b-\\w]", "a{2,1}", "a{2",    "a{",     "{2}", "a{100001}",
        "a\\",           "\\x4",          "\\c",       "(a)\\2", "(a\\1)", "(?a)",   "(?"}) {
    const int expected = Outcome([&] { return std::regex_match("a", std::regex(pattern)); });
    ASSERT_GE(expected, kError) << pattern;
    EXPECT_EQ(OutcomeOf("a", pattern), expected) << pattern;
    EXPECT_EQ(OutcomeOf(Times(1'000, "a"), Times(1'000, "a") + "|" + pattern), expected) << pattern;
  }
}

TEST(MatchString, MayWriteOverItsArguments) {
  std::string text = "abc";
  EXPECT_TRUE(Utils::MatchString(text, "a.c", &text));
  EXPECT_EQ(text, "abc");
  std::string pattern = "a.c";
  EXPECT_TRUE(Utils::MatchString(text, pattern, &pattern));
  EXPECT_EQ(pattern, "abc");
}

// Runs `work` on a thread with a stack of 512 KiB.
template <typename Work>
void OnSmallStack(Work work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 512 * 1024), 0);
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    (*static_cast<Work*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

constexpr int kAnyLimit = -1;  // which of the limits is reached first depends on the build
constexpr int kStack = kError + errors::error_stack;
constexpr int kComplexity = kError + errors::error_complexity;
constexpr int kSpace = kError + errors::error_space;

TEST(MatchString, HoldsOutOnASmallStack) {
  const std::string long_text = Times(200'000, "a");
  const struct {
    std::string text, pattern;
    int outcome;
  } rows[] = {
      // Long texts, on which plain matching recurses or never ends.
      {long_text, ".*", kYes},
      {long_text, "(a|b)*", kYes},
      {long_text, "(a*)*b", kNo},
      {Times(40, "a"), "(a*)*b", kNo},
      {Times(200, "a"), "(a|aa)*c", kNo},
      {long_text, "(.*)(.*)(.*)(.*)x", kNo},
      {long_text, Times(40, "(") + "a" + Times(40, ")") + "*", kYes},
      {long_text + "1", "(?=.*\\d)(?=.*a)(?:(?!foo).)*", kYes},
      {Times(20'000, "a"), "(?:(?!.*x).)*", kComplexity},
      // Long patterns.
      {Times(20'000, "a"), Times(20'000, "a"), kYes},
      {"c", Times(5'000, "b|") + "c", kYes},
      {"bc", "(?:" + Times(5'000, "b|") + "c)*", kYes},
      {Times(20'000, "a"), "a{0,20000}", kYes},
      {"a", Times(100'000, "b|"), kSpace},
      {"a", "a{99999999999999999999}", kSpace},
      {"a", Times(20'000, "a") + ")", kError + errors::error_paren},
      {"a", Times(20'000, "a") + "[", kError + errors::error_brack},
      // Deep recursion in the engine, on both sides of the limits.
      {Times(80, "a"), Times(80, "(a") + Times(80, ")"), kYes},
      {"", Times(100'000, "("), kStack},
      {"a", Times(40, "(?=") + "a" + Times(40, ")") + "a", kYes},
      {"a", Times(100'000, "(?="), kStack},
      {Times(200, "a"), Times(200, "a?"), kYes},
      {"a", Times(100'000, "a?"), kStack},
      {"a", Times(200, "a*?") + "b", kNo},
      {"", Times(200, "^"), kYes},
      {"", Times(100'000, "^"), kStack},
      {"", Times(100'000, "(?:)"), kStack},
      {Times(50, "1,"), "(\\d*,?){0,50}", kYes},
      {"a", "((a?){0,300}){0,300}", kStack},
      {Times(100, "a"), Times(100, Times(200, "\\B") + "a"), kAnyLimit},
      // Back-references, which only the recursive executor knows.
      {Times(20, "a") + "-" + Times(20, "a"), "(.*)-\\1", kYes},
      {long_text, "(.*)\\1", kStack},
      {Times(40, "a"), "(a*)*\\1b", kAnyLimit},
      {"y", "()" + Times(40, "(|)") + "\\1x", kComplexity},
      {"a", "(a)\\99999999999999999999", kError + errors::error_backref},
  };
  for (const auto& row : rows) {
    const auto start = std::chrono::steady_clock::now();
    int outcome = kNo;
    OnSmallStack([&] { outcome = OutcomeOf(row.text, row.pattern); });
    const std::string name = row.pattern.substr(0, 40) + " on " + row.text.substr(0, 20);
    if (row.outcome == kAnyLimit) {
      EXPECT_TRUE(outcome == kStack || outcome == kComplexity || outcome == kNo) << name << ' ' << outcome;
    } else {
      EXPECT_EQ(outcome, row.outcome) << name;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60)) << name;
  }
}

TEST(BalancedPattern, MeansTheSameAndIsShallow) {
  const struct {
    std::string text, pattern;
  } rows[] = {
      {Times(40, "xyz"), Times(40, "xyz")},
      {Times(40, "aab"), Times(40, "a+[b\\]]")},
      {Times(40, "(a") + "b", Times(40, "\\(\\x61") + "b"},
      {"c39",
       [] {
         std::string list;
         for (int i = 0; i < 40; ++i) list += "c" + std::to_string(i) + "|";
         return "(" + list + "d)";
       }()},
      {Times(10, "ab"), "(" + Times(20, "a{1}(?:b|[[:digit:]])|c|") + "d)"},
      {"aa" + Times(20, "b"), "(a)\\1" + Times(20, "(b)")},
      {"a", Times(20, "a") + "*+" + Times(20, "a")},
      {"a", Times(20, "a") + "{1" + Times(20, "a")},
  };
  for (const auto& row : rows) {
    const std::string balanced = BalancedPattern(row.pattern);
    EXPECT_NE(balanced, row.pattern);
    for (const std::string& text : {row.text, row.text + "a", std::string("d")}) {
      EXPECT_EQ(Outcome([&] { return std::regex_match(text, std::regex(balanced)); }),
                Outcome([&] { return std::regex_match(text, std::regex(row.pattern)); }))
          << row.pattern << " as " << balanced << " on " << text;
    }
  }
  EXPECT_LT(DemandsOf(BalancedPattern(Times(50'000, "a"))).compile_depth, 100U);
  EXPECT_LT(DemandsOf(BalancedPattern(Times(20'000, "a|"))).match_depth, 120U);
}

}  // namespace
