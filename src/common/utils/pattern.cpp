#include "common/utils/pattern.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "platform/stack.h"

// std::regex compiles by recursion: one call for each term of an alternative, several for each group.
// libstdc++ also matches by recursion: its default executor calls itself for each character and can take
// exponential time. Its polynomial executor does neither, but is slower and knows no back-references.
// Therefore:
//
//   1. LookAt bounds, from the pattern's text, its size and the recursion that nothing interrupts.
//   2. The default executor runs on iterators that charge a budget of steps and check the stack.
//   3. If that exceeds the budget, and there is no back-reference, the polynomial executor runs on them.
//
// libc++'s executor does not recurse and bounds its own steps, so there the first step is enough.

namespace Matching {
namespace {

using namespace std::regex_constants;

// Bytes of stack for each term and each alternative: 96 to 144, measured with g++ 12 from -O0 to -O3.
constexpr double kTermStack = 160;
// The same for each group or look-ahead, repeated or not: 430 to 911.
constexpr double kGroupStack = 960;
// At every character of the text the polynomial executor clears a byte for each character of the pattern:
// with so many 0.4 microseconds, six times the rest of its work for ".*".
constexpr double kMostSize = 20'000;
// Comparisons of positions, at most some 50 nanoseconds each: a second, and five for 10 MB of text.
[[maybe_unused]] constexpr std::size_t kMostSteps = 20'000'000;
[[maybe_unused]] constexpr std::size_t kStepsPerCharacter = 8;

// A character, class, assertion or group, with its repetitions. In double, products of counts do not
// overflow.
struct Term {
  double stack = 0;
  double size = 0;
  bool is_group = false;
  bool is_repeated = false;

  void Repeat(double copies) {
    // Each copy of a character is followed by a comparison; the calls for copies of a group add up.
    if (is_group || is_repeated) stack *= copies;
    if (is_repeated) stack += kGroupStack;
    size = size * std::max(copies, 1.0) + 1;
    is_repeated = true;
  }
};

struct Group {
  Term last;
  double stack = 0;  // of the current alternative, without the last term
  double deepest = 0;
  double size = 0;
  double alternatives = 0;

  void Add(const Term& term) {
    stack += last.stack;
    size += last.size;
    last = term;
  }

  void EndAlternative() {
    Add({});
    deepest = std::max(deepest, std::exchange(stack, 0));
    ++alternatives;
  }

  Term AsTerm() {
    EndAlternative();
    return {deepest + alternatives * kTermStack + kGroupStack, size + alternatives, true};
  }
};

// Reads the number at `at`, if any, and returns its end. libstdc++ truncates larger ones, or overflows.
const char* ReadNumber(const char* at, const char* end, std::uint32_t& number, error_type too_long) {
  const auto [after, error] = std::from_chars(at, end, number);
  if (error == std::errc::result_out_of_range) throw std::regex_error(too_long);
  return after;
}

// The larger number of the braces at `at`.
double CountOf(std::string_view pattern, std::size_t at) {
  const char* const end = pattern.data() + pattern.size();
  std::uint32_t least = 0;
  std::uint32_t most = 0;
  const char* const comma = ReadNumber(pattern.data() + at + 1, end, least, error_space);
  if (comma != end && *comma == ',') ReadNumber(comma + 1, end, most, error_space);
  return std::max(least, most);
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

// Behind an error in the pattern what it finds means nothing, and does not matter: compiling fails there.
void Pattern::LookAt() {
  Group group;
  std::vector<Group> enclosing;
  const auto close = [&] {
    const Term term = group.AsTerm();
    group = enclosing.back();
    enclosing.pop_back();
    group.Add(term);
  };
  for (std::size_t at = 0; at < pattern_.size(); ++at) {
    const char next = pattern_[at + 1];
    switch (pattern_[at]) {
      case '(':
        has_look_ahead_ |= next == '?' && pattern_.compare(at, 3, "(?:") != 0;
        at += next == '?' ? 2 : 0;
        enclosing.push_back(std::exchange(group, {}));
        break;
      case ')':
        if (!enclosing.empty()) close();
        break;
      case '|':
        group.EndAlternative();
        break;
      case '*':
      case '+':
      case '?':
        group.last.Repeat(1);
        break;
      case '{':
        group.last.Repeat(CountOf(pattern_, at));
        break;
      case '[':
        group.Add({kTermStack, static_cast<double>(EndOfBracket(pattern_, at) - at)});
        at = EndOfBracket(pattern_, at);
        break;
      case '\\':
        if (next >= '1' && next <= '9') {
          std::uint32_t group_number = 0;
          ReadNumber(pattern_.data() + at + 1, pattern_.data() + pattern_.size(), group_number,
                     error_backref);
          back_references_.push_back(at);
        }
        at += next == 'c' ? 2 : 1;
        [[fallthrough]];
      default:
        group.Add({kTermStack, 1});
    }
  }
  while (!enclosing.empty()) close();  // a group that is not closed is entered all the same
  const Term all = group.AsTerm();
  stack_ = all.stack;
  size_ = all.size;
}

// Of the rest of the stack matching may use four eighths: one is left for the calls at the end of the
// recursion.
std::size_t Pattern::RequireStack() const {
  const std::size_t left = Platform::StackLeft();
  if (stack_ > static_cast<double>(left) * 3 / 8) throw std::regex_error(error_stack);
  return left;
}

Pattern::Pattern(const std::string& pattern) : pattern_(pattern) {
  LookAt();
  RequireStack();
  if (size_ > kMostSize) throw std::regex_error(error_space);
  regex_ = Compile({});
}

#ifdef __GLIBCXX__

// What one match may use. Neither this nor Position is in an unnamed namespace, where g++ would inline a
// look-ahead, with its large frame, into the function that recurses.
struct Budget {
  std::size_t steps;
  std::uintptr_t lowest;  // of the stack

  [[gnu::always_inline]] void ChargeStep() {
    if (steps-- == 0) throw std::regex_error(error_complexity);
  }

  // Once the stack is used up it stays so, and the executor leaves all of its frames.
  [[gnu::always_inline]] bool StackIsUsedUp() {
    if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) > lowest) return false;
    lowest = UINTPTR_MAX;
    return true;
  }
};

// A position in the text. Executors compare two at every character, repetition and assertion: one step.
class Position {
 public:
  using iterator_category = std::bidirectional_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Position() = default;
  Position(const char* at, Budget* budget) : at_(at), budget_(budget) {}

  reference operator*() const { return *at_; }
  Position& operator++() { return ++at_, *this; }
  Position& operator--() { return --at_, *this; }
  Position operator++(int) { return {at_++, budget_}; }  // NOLINT(cert-dcl21-cpp): const prevents a move
  Position operator--(int) { return {at_--, budget_}; }  // NOLINT(cert-dcl21-cpp)
  // Once the stack is used up every position equals the text's end, where an executor returns: thousands of
  // frames are left a thousand times as fast as by an exception.
  friend bool operator==(const Position& left, const Position& right) {
    left.budget_->ChargeStep();
    return left.budget_->StackIsUsedUp() || left.at_ == right.at_;
  }

 private:
  const char* at_ = nullptr;
  Budget* budget_ = nullptr;
};

std::regex Pattern::Compile(std::regex::flag_type executor) const {
  // Only back-references need the groups.
  if (back_references_.empty()) return std::regex(pattern_, std::regex::nosubs | executor);
  // A reference to a group that did not match fails without a comparison, so assertions before it make one.
  std::string charged = pattern_;
  for (auto at = back_references_.rbegin(); at != back_references_.rend(); ++at)
    charged.insert(*at, "(?:\\b|\\B)");
  return std::regex(charged);
}

bool Pattern::MatchesWhole(const std::string& text) {
  // More than some megabytes of stack would take memory that the thread never gives back.
  const std::size_t stack = std::min(RequireStack() / 2, std::size_t{4} << 20);
  const std::uintptr_t lowest = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - stack;
  // To enter a look-ahead takes time for each character of the pattern.
  const std::size_t cost = has_look_ahead_ ? 1 + static_cast<std::size_t>(size_) / 64 : 1;
  const auto match = [&](const std::regex& regex, std::size_t steps) {
    Budget budget{(steps + text.size() * kStepsPerCharacter) / cost, lowest};
    const Position begin(text.data(), &budget);
    const bool matches = std::regex_match(begin, Position(text.data() + text.size(), &budget), regex);
    if (budget.lowest != lowest) throw std::regex_error(error_stack);
    return matches;
  };
  if (!back_references_.empty()) return match(regex_, kMostSteps / 10);
  try {
    return match(regex_, kMostSteps / 1000);  // what is lost when it is not enough: 0.2 milliseconds
  } catch (const std::regex_error&) {
    if (!linear_) linear_ = Compile(std::regex_constants::__polynomial);
  }
  return match(*linear_, kMostSteps);
}

#else

std::regex Pattern::Compile(std::regex::flag_type) const {
  return std::regex(pattern_);
}

bool Pattern::MatchesWhole(const std::string& text) {
  RequireStack();
  return std::regex_match(text, regex_);
}

#endif

}  // namespace Matching
