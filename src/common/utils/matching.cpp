#include "common/utils/matching.h"

#include <cctype>
#include <cstring>
#include <iterator>
#include <regex>
#include <string_view>

#include "common/text_or_empty.h"
#include "common/utils/pattern_limits.h"

namespace {

// Folds as the locale does, whether or not plain char has a sign here.
unsigned char Folded(char byte) {
  return static_cast<unsigned char>(std::tolower(static_cast<signed char>(byte)));
}

using std::regex_constants::ECMAScript;

#ifdef __GLIBCXX__

// libstdc++ has two executors. Its default one is quick, but it recurses for every character of the text and
// can take exponential time. The polynomial one takes linear time and a stack that depends on the pattern
// alone, but is slower, knows no back-references and starts anew inside every look-ahead.

constexpr std::size_t kShortText = 200;
constexpr std::uint64_t kFewWays = 1 << 18;

// What one match may use.
class Allowance {
 public:
  explicit Allowance(std::uint64_t steps) : steps_(steps), lowest_(StackPointer() - kStack) {}

  // Counts a step. Throws when all are spent. True as soon as the stack has been: an executor that is told,
  // from then on, that it has reached the end of the text returns at once. That is a thousand times quicker
  // than an exception that has to leave it.
  bool IsSpent() {
    if (steps_-- == 0) throw std::regex_error(std::regex_constants::error_complexity);
    if (StackPointer() < lowest_) lowest_ = UINTPTR_MAX;
    return StackIsSpent();
  }
  bool StackIsSpent() const { return lowest_ == UINTPTR_MAX; }

 private:
  static constexpr std::uintptr_t kStack = std::uintptr_t{192} << 10;

  [[gnu::always_inline]] static std::uintptr_t StackPointer() {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  }

  std::uint64_t steps_;
  std::uintptr_t lowest_;
};

// A place in the text for executors that need watching: comparing two of them draws on the allowance. Every
// way an executor tries ends in such a comparison, and so does every round of a loop.
class WatchedPlace {
 public:
  using iterator_category = std::bidirectional_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  WatchedPlace() = default;
  WatchedPlace(const char* at, Allowance& allowance) : at_(at), allowance_(&allowance) {}

  reference operator*() const { return *at_; }
  WatchedPlace& operator++() {
    ++at_;
    return *this;
  }
  WatchedPlace& operator--() {
    --at_;
    return *this;
  }
  // NOLINTBEGIN(cert-dcl21-cpp): a const result could not be moved from
  WatchedPlace operator++(int) { return {at_++, *allowance_}; }
  WatchedPlace operator--(int) { return {at_--, *allowance_}; }
  // NOLINTEND(cert-dcl21-cpp)
  friend bool operator==(const WatchedPlace& left, const WatchedPlace& right) {
    return left.allowance_->IsSpent() || left.at_ == right.at_;
  }

 private:
  const char* at_ = nullptr;
  Allowance* allowance_ = nullptr;
};

bool MatchesPlainly(const std::string& text, const std::regex& regex) {
  return std::regex_match(text.data(), text.data() + text.size(), regex);
}

bool MatchesWatched(const std::string& text, const std::regex& regex, std::uint64_t steps) {
  Allowance allowance(steps);
  const WatchedPlace begin(text.data(), allowance);
  const WatchedPlace end(text.data() + text.size(), allowance);
  const bool matches = std::regex_match(begin, end, regex);
  if (allowance.StackIsSpent()) throw std::regex_error(std::regex_constants::error_stack);
  return matches;
}

// Whether the default executor can be left alone with so short a text.
bool IsTame(const PatternDemands& demands, std::size_t length) {
  if (demands.repeats_groups || demands.steps > 128) return false;
  std::uint64_t ways = demands.ways;
  for (std::uint64_t loop = 0; loop < demands.loops && ways <= kFewWays; ++loop) ways *= length + 1;
  return ways <= kFewWays;
}

bool Matches(const std::string& text, const std::string& pattern, const PatternDemands& demands) {
  const std::uint64_t many_steps = 1'000'000 + text.size() * (128 + pattern.size());
  if (demands.has_back_reference) return MatchesWatched(text, std::regex(pattern), many_steps);

  // Without back-references no group needs to be remembered.
  constexpr auto kOptions = ECMAScript | std::regex_constants::nosubs;
  if (text.size() <= kShortText) {
    const std::regex regex(pattern, kOptions);
    if (IsTame(demands, text.size())) return MatchesPlainly(text, regex);
    try {
      return MatchesWatched(text, regex, 100'000);
    } catch (const std::regex_error&) {  // too much for this executor, not for the other one
    }
  }
  const std::regex regex(pattern, kOptions | std::regex_constants::__polynomial);
  return demands.has_look_ahead ? MatchesWatched(text, regex, many_steps) : MatchesPlainly(text, regex);
}

#else

bool Matches(const std::string& text, const std::string& pattern, const PatternDemands&) {
  return std::regex_match(text, std::regex(pattern, ECMAScript));
}

#endif

bool Matches(const std::string& text, const std::string& pattern) {
  const PatternDemands demands = DemandsOf(pattern);
  if (demands.FitsStack()) return Matches(text, pattern, demands);
  const std::string balanced = BalancedPattern(pattern);
  const PatternDemands balanced_demands = DemandsOf(balanced);
  if (!balanced_demands.FitsStack()) throw std::regex_error(std::regex_constants::error_stack);
  return Matches(text, balanced, balanced_demands);
}

}  // namespace

std::int32_t Utils::CompareI(const char* first, const char* second) {
  first = TextOrEmpty(first);
  second = TextOrEmpty(second);
  // Equal bytes fold alike in every locale, and the platform compares them in blocks.
  if (*first == *second && std::strcmp(first, second) == 0) return 0;
  for (;; ++first, ++second) {
    if (*first == '\0' || *second == '\0') return (*first != '\0') - (*second != '\0');
    if (*first == *second) continue;
    const int difference = Folded(*first) - Folded(*second);
    if (difference != 0) return difference;
  }
}

bool Utils::StartWith(const std::string& text, const char* prefix) {
  return prefix != nullptr && text.compare(0, std::strlen(prefix), prefix) == 0;
}

bool Utils::EndWith(const std::string& text, const char* suffix) {
  if (suffix == nullptr) return false;
  const std::string_view end = suffix;
  return end.size() <= text.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool Utils::MatchString(const std::string& text, const std::string& pattern, std::string* matched) {
  if (!Matches(text, pattern)) return false;
  if (matched != nullptr) *matched = text;
  return true;
}
