#include "common/utils/pattern.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/stack.h"

// std::regex compiles by recursion: one call for each term of an alternative, several for each group.
// libstdc++ also matches by recursion: its default executor calls itself for each character and can take
// exponential time. Its polynomial executor does neither, but is slower and knows no back-references.
// Therefore:
//
//   1. MeasureGroup bounds, from the pattern's text, its size and the recursion that nothing interrupts.
//   2. The default executor runs on iterators that charge a budget of steps and check the stack.
//   3. If that exceeds the budget, and there is no back-reference, the polynomial executor runs on them.
//
// libc++'s executor does not recurse and bounds its own steps, so there only the pattern has to be bounded.

namespace Matching {
namespace {

using namespace std::regex_constants;

// Bytes of stack for each term and each alternative: 96 to 144, measured with g++ 12 from -O0 to -O3.
constexpr double kTermStack = 160;
// The same for each group or look-ahead, repeated or not: 430 to 911.
constexpr double kGroupStack = 960;
// The same for throwing an exception, 16 KiB at most, and for the signal handlers of the caller.
constexpr double kReserve = 64 << 10;
// Bytes that the polynomial executor clears at every character of the text, in 0.4 microseconds.
constexpr double kMostSize = 20'000;
// Comparisons of positions, at most some 50 nanoseconds each: a second, and five for 10 MB of text.
[[maybe_unused]] constexpr std::size_t kMostSteps = 20'000'000;
[[maybe_unused]] constexpr std::size_t kMostStepsPerCharacter = 8;

// The larger number of the braces that begin before `at`.
double ReadCount(const char* at) {
  char* end = nullptr;
  const auto least = std::strtoul(at, &end, 10);
  return static_cast<double>(std::max(least, *end == ',' ? std::strtoul(end + 1, nullptr, 10) : 0));
}

// The index of the "]" of the bracket expression at `at`, or of the pattern's last character.
std::size_t EndOfBracket(std::string_view pattern, std::size_t at) {
  for (++at; at < pattern.size() && pattern[at] != ']'; ++at) {
    const std::string_view rest = pattern.substr(at);
    if (rest[0] == '\\') {
      at += rest.starts_with("\\c") ? 2U : 1U;
    } else if (rest.starts_with("[:") || rest.starts_with("[.") || rest.starts_with("[=")) {
      at = std::min(pattern.find(rest[1], at + 2), pattern.size() - 2) + 1;
    }
  }
  return std::min(at, pattern.size() - 1);
}

}  // namespace

// In double, products of counts do not overflow.
void Pattern::Term::Repeat(double copies) {
  // Each copy of a character is followed by a comparison; the calls for copies of a group add up.
  if (is_group || is_repeated) stack *= copies;
  if (is_repeated) stack += kGroupStack;
  size = size * std::max(copies, 1.0) + 1;
  is_repeated = true;
}

// After a syntax error the result is meaningless but harmless: compiling then fails.
Pattern::Term Pattern::MeasureGroup(std::size_t& at) {
  if (static_cast<double>(Platform::StackLeft()) < kReserve) throw std::regex_error(error_stack);
  Term group{kGroupStack, 0, true};
  Term last;
  double stack = 0;  // of the current alternative, without the last term
  double deepest = 0;
  const auto add = [&](const Term& term) {
    stack += last.stack;
    group.size += last.size;
    last = term;
  };
  const auto end_alternative = [&] {
    add({});
    deepest = std::max(deepest, std::exchange(stack, 0));
    group.stack += kTermStack;
    ++group.size;
  };
  for (; at < pattern_.size() && pattern_[at] != ')'; ++at) {
    const char* const next = &pattern_[at + 1];
    switch (pattern_[at]) {
      case '(':
        has_look_ahead_ |= *next == '?' && next[1] != ':';
        at += *next == '?' ? 3 : 1;
        add(MeasureGroup(at));
        break;
      case '|':
        end_alternative();
        break;
      case '*':
      case '+':
      case '?':
      case '{':
        last.Repeat(pattern_[at] == '{' ? ReadCount(next) : 1);
        break;
      case '[':
        add({kTermStack, static_cast<double>(EndOfBracket(pattern_, at) - at)});
        at = EndOfBracket(pattern_, at);
        break;
      case '\\':
        if (*next >= '1' && *next <= '9') {
          // libstdc++ truncates numbers.
          if (std::strtoul(next, nullptr, 10) > pattern_.size()) throw std::regex_error(error_backref);
          back_references_.push_back(at);
        }
        at += *next == 'c' ? 2 : 1;
        [[fallthrough]];
      default:
        add({kTermStack, 1});
    }
  }
  end_alternative();
  group.stack += deepest;
  return group;
}

// The stack that matching may use. The rest is kept for compiling, or for what runs between two comparisons.
std::size_t Pattern::StackForMatching() const {
  const double usable = static_cast<double>(Platform::StackLeft()) - kReserve - whole_.stack;
  if (usable < whole_.stack) throw std::regex_error(error_stack);
  return static_cast<std::size_t>(usable);
}

Pattern::Pattern(const std::string& pattern) : pattern_(pattern) {
  std::size_t begin = 0;
  whole_ = MeasureGroup(begin);
  if (whole_.size > kMostSize) throw std::regex_error(error_space);
  StackForMatching();
  // Only back-references need the groups. One to a group that did not match fails without a comparison, and
  // would cost nothing: the assertions inserted before it do compare.
  for (auto at = back_references_.rbegin(); at != back_references_.rend(); ++at)
    pattern_.insert(*at, "(?:\\b|\\B)");
  regex_.assign(pattern_, back_references_.empty() ? std::regex::nosubs : std::regex::ECMAScript);
}

// Neither this nor Position is in an unnamed namespace, where g++ would inline a look-ahead, with its large
// frame, into the function that recurses.
struct Budget {
  std::size_t steps;
  std::uintptr_t lowest;  // of the stack
};

// A position in the text. Executors compare two at every character, repetition and assertion: one step.
struct Position {
  using value_type = char;
  using difference_type = std::ptrdiff_t;

  const char* at = nullptr;
  Budget* budget = nullptr;

  const char& operator*() const { return *at; }
  Position& operator++() { return ++at, *this; }
  Position& operator--() { return --at, *this; }
  Position operator++(int) { return {at++, budget}; }  // NOLINT(cert-dcl21-cpp): const prevents a move
  Position operator--(int) { return {at--, budget}; }  // NOLINT(cert-dcl21-cpp)
  // Once the stack is used up every position equals the text's end, where an executor returns: thousands of
  // frames are left a thousand times as fast as by an exception.
  [[gnu::always_inline]] friend bool operator==(const Position& left, const Position& right) {
    if (left.budget->steps-- == 0) throw std::regex_error(error_complexity);
    const auto stack = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (stack > left.budget->lowest) return left.at == right.at;
    left.budget->lowest = UINTPTR_MAX;
    return true;
  }
};

bool Pattern::MatchesWhole(const std::string& text) {
  [[maybe_unused]] const std::size_t stack = StackForMatching();
#ifdef __GLIBCXX__
  const auto lowest = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - stack;
  const auto match = [&](const std::regex& regex, std::size_t steps) {
    // Entering a look-ahead costs one step per 64 characters of the pattern.
    if (has_look_ahead_) steps /= 1 + static_cast<std::size_t>(whole_.size) / 64;
    Budget budget{steps, lowest};
    const Position begin{text.data(), &budget};
    const bool matches = std::regex_match(begin, Position{text.data() + text.size(), &budget}, regex);
    if (budget.lowest != lowest) throw std::regex_error(error_stack);
    return matches;
  };
  if (back_references_.empty() && !polynomial_) {
    try {
      return match(regex_, kMostSteps / 200);  // when they do not suffice, a few milliseconds are lost
    } catch (const std::regex_error&) {
      polynomial_.emplace(pattern_, std::regex::nosubs | std::regex_constants::__polynomial);
    }
  }
  return match(polynomial_ ? *polynomial_ : regex_, kMostSteps + text.size() * kMostStepsPerCharacter);
#else
  return std::regex_match(text, regex_);
#endif
}

}  // namespace Matching
