#include "common/utils/matching.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <new>
#include <regex>
#include <string_view>
#include <type_traits>
#include <utility>

#include "common/text_or_empty.h"
#include "common/utils/pattern_limits.h"

namespace {

// Folds as the locale does, whether or not plain char has a sign here.
unsigned char Folded(char byte) {
  return static_cast<unsigned char>(std::tolower(static_cast<signed char>(byte)));
}

// Whether strcasecmp folds every byte as Folded does. glibc's reads the same table of the locale, but with
// unsigned indexes. Both halves of the table agree but for -1, which is EOF: KOI8-R folds 0xFF and not -1.
bool StrcasecmpFoldsAlike() {
#ifdef __GLIBC__
  return std::tolower(0xFF) == 0xFF;
#else
  return false;
#endif
}

// Out of line, so that CompareI saves no registers for it.
[[gnu::noinline]] std::int32_t CompareFolded(const char* first, const char* second) {
  for (;; ++first, ++second) {
    if (*first == '\0' || *second == '\0') return (*first != '\0') - (*second != '\0');
    if (*first == *second) continue;
    const int difference = Folded(*first) - Folded(*second);
    if (difference != 0) return difference;
  }
}

constexpr std::size_t kShortText = 200;

#ifdef __GLIBCXX__

// libstdc++ has two executors. Its default one is quick, but it recurses for every character of the text and
// can take exponential time. The polynomial one takes linear time and a stack that depends on the pattern
// alone, but is slower, knows no back-references and starts anew inside every look-ahead.

constexpr std::uint64_t kFewWays = 1 << 18;

}  // namespace

// Out of the unnamed namespace, where compilers see every use of a template: they would put the look-ahead,
// with all that it needs of the stack, into the function that recurses.
namespace executors {

// What one match may use.
class Allowance {
 public:
  explicit Allowance(std::uint64_t steps) : steps_(steps), lowest_(StackPointer() - kStack) {}

  // Counts a step. Throws when all are spent. True as soon as the stack has been: an executor that is told,
  // from then on, that it has reached the end of the text returns at once. That is a thousand times quicker
  // than an exception that has to leave it.
  [[gnu::always_inline]] bool IsSpent() {
    if (steps_-- == 0) ThrowComplexity();
    if (StackPointer() >= lowest_) return false;
    lowest_ = UINTPTR_MAX;
    return true;
  }
  bool StackIsSpent() const { return lowest_ == UINTPTR_MAX; }

 private:
  static constexpr std::uintptr_t kStack = std::uintptr_t{192} << 10;

  [[noreturn, gnu::noinline]] static void ThrowComplexity() {
    throw std::regex_error(std::regex_constants::error_complexity);
  }

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

// The blocks of one match that are free again, all of the size that was asked for first.
class SpareBlocks {
 public:
  SpareBlocks() = default;
  SpareBlocks(const SpareBlocks&) = delete;
  SpareBlocks& operator=(const SpareBlocks&) = delete;
  ~SpareBlocks() {
    while (first_ != nullptr) ::operator delete(std::exchange(first_, first_->next));
  }

  void* Take(std::size_t size) {
    if (size_ == 0) size_ = std::max(size, sizeof(Block));
    if (size != size_ || first_ == nullptr) return ::operator new(size);
    return std::exchange(first_, first_->next);
  }

  void GiveBack(void* block, std::size_t size) {
    if (size != size_) return ::operator delete(block);
    first_ = ::new (block) Block{first_};
  }

 private:
  struct Block {
    Block* next;
  };
  Block* first_ = nullptr;
  std::size_t size_ = 0;
};

// For the results of a match. The polynomial executor copies them for every state at every character, which
// takes a third of its time when each copy is a new block.
template <typename T>
class SparingAllocator {
 public:
  using value_type = T;
  using propagate_on_container_copy_assignment = std::true_type;
  using propagate_on_container_move_assignment = std::true_type;
  using propagate_on_container_swap = std::true_type;

  SparingAllocator() = default;  // for the executor's own vectors, before anything is assigned to them
  explicit SparingAllocator(SpareBlocks& spare) : spare_(&spare) {}

  T* allocate(std::size_t count) {
    const std::size_t size = count * sizeof(T);
    return static_cast<T*>(spare_ != nullptr ? spare_->Take(size) : ::operator new(size));
  }
  void deallocate(T* block, std::size_t count) {
    if (spare_ == nullptr) return ::operator delete(block);
    spare_->GiveBack(block, count * sizeof(T));
  }
  bool operator==(const SparingAllocator&) const = default;

 private:
  SpareBlocks* spare_ = nullptr;
};

}  // namespace executors

namespace {

template <typename Place>
bool MatchesWhole(Place begin, Place end, const std::regex& regex) {
  using Allocator = executors::SparingAllocator<std::sub_match<Place>>;
  executors::SpareBlocks spare;
  std::match_results<Place, Allocator> results{Allocator(spare)};
  return std::regex_match(begin, end, results, regex);
}

bool MatchesPlainly(const std::string& text, const std::regex& regex) {
  return MatchesWhole(text.data(), text.data() + text.size(), regex);
}

// What stays unwatched, between two steps, counts as steps too when it is much.
bool MatchesWatched(const std::string& text, const std::regex& regex, std::uint64_t steps,
                    std::uint64_t unwatched_ways = 1) {
  if (unwatched_ways > kFewWays) throw std::regex_error(std::regex_constants::error_complexity);
  executors::Allowance allowance(steps / (1 + unwatched_ways / 64));
  const executors::WatchedPlace begin(text.data(), allowance);
  const executors::WatchedPlace end(text.data() + text.size(), allowance);
  const bool matches = MatchesWhole(begin, end, regex);
  if (allowance.StackIsSpent()) throw std::regex_error(std::regex_constants::error_stack);
  return matches;
}

// What a step may cost, in those of a pattern without look-aheads: to begin one takes a new cell for every
// state of the whole pattern.
std::uint64_t CostOfStep(const PatternDemands& demands) {
  return demands.has_look_ahead ? 1 + demands.size / 512 : 1;
}

// Whether the default executor can be left alone with so short a text.
bool IsTame(const PatternDemands& demands, std::size_t length) {
  if (demands.repeats_groups || demands.steps > (demands.has_back_reference ? 64 : 128)) return false;
  const std::uint64_t few_ways = demands.has_look_ahead ? kFewWays / 64 / CostOfStep(demands) : kFewWays;
  std::uint64_t ways = demands.ways;
  for (std::uint64_t loop = 0; loop < demands.loops && ways <= few_ways; ++loop) ways *= length + 1;
  return ways <= few_ways;
}

bool Matches(const std::string& text, const std::string& pattern, const PatternDemands& demands) {
  using std::regex_constants::ECMAScript;
  // Without back-references no group needs to be remembered.
  const auto options = demands.has_back_reference ? ECMAScript : ECMAScript | std::regex_constants::nosubs;
  const std::uint64_t cost = CostOfStep(demands);
  const std::uint64_t many_steps = (1'000'000 + text.size() * (128 + pattern.size())) / cost;
  if (text.size() <= kShortText || demands.has_back_reference) {
    const std::regex regex(pattern, options);
    if (text.size() <= kShortText && IsTame(demands, text.size())) return MatchesPlainly(text, regex);
    if (demands.has_back_reference) return MatchesWatched(text, regex, many_steps, demands.unwatched_ways);
    try {
      return MatchesWatched(text, regex, (demands.has_look_ahead ? 2'000 : 100'000) / cost);
    } catch (const std::regex_error&) {  // too much for this executor, not for the other one
    }
  }
  const std::regex regex(pattern, options | std::regex_constants::__polynomial);
  return demands.has_look_ahead ? MatchesWatched(text, regex, many_steps) : MatchesPlainly(text, regex);
}

#else

bool Matches(const std::string& text, const std::string& pattern, const PatternDemands&) {
  return std::regex_match(text, std::regex(pattern));
}

#endif

// Whether a glance at the pattern tells that any executor can be left alone with it on a short text: few
// terms, a loop or two, no groups. What is escaped or stands in brackets counts for what it looks like, that
// is for more than it is.
bool IsTameAtAGlance(std::string_view pattern) {
  if (pattern.size() > 64) return false;
  int loops = 0;
  int choices = 0;
  char previous = '\0';
  for (const char character : pattern) {
    switch (character) {
      case '*':
      case '+':
        if (previous == '*' || previous == '+' || previous == '?') return false;  // a loop of loops
        ++loops;
        break;
      case '?':
      case '|':
        ++choices;
        break;
      case '(':
      case '{':
        return false;
      default:
        if (previous == '\\' && character >= '0' && character <= '9') return false;
    }
    previous = character;
  }
  return loops <= 2 && choices <= 2;
}

bool Matches(const std::string& text, const std::string& pattern) {
  if (text.size() <= kShortText && IsTameAtAGlance(pattern)) {
    return std::regex_match(text, std::regex(pattern));
  }
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
  if (!StrcasecmpFoldsAlike()) return CompareFolded(first, second);
  const int order = ::strcasecmp(first, second);
  return (order > 0) - (order < 0);
}

bool Utils::StartWith(const std::string& text, const char* prefix) {
  return prefix != nullptr && std::string_view(text).starts_with(prefix);
}

bool Utils::EndWith(const std::string& text, const char* suffix) {
  return suffix != nullptr && std::string_view(text).ends_with(suffix);
}

bool Utils::MatchString(const std::string& text, const std::string& pattern, std::string* matched) {
  if (!Matches(text, pattern)) return false;
  if (matched != nullptr) *matched = text;
  return true;
}
