// MatchString against the standard facility itself. The input is a pattern, a newline and a text.

#include <algorithm>
#include <cstdint>
#include <regex>
#include <string>
#include <string_view>

#include "common/utils/matching.h"
#include "common/utils/pattern_limits.h"
#include "fuzz/check.h"

namespace {

using Fuzz::Require;

constexpr int kRefused = 1000;
constexpr std::uint64_t kLargestProduct = 300;

template <typename Match>
int Outcome(Match match) {
  try {
    return match() ? 1 : 0;
  } catch (const std::regex_error& error) {
    return kRefused + error.code();
  }
}

bool IsLimit(int outcome) {
  using namespace std::regex_constants;
  return outcome == kRefused + error_stack || outcome == kRefused + error_complexity ||
         outcome == kRefused + error_space;
}

// The numbers in the pattern, multiplied. A large one makes the facility build automata of many thousand
// states before it refuses them, which would take all the time there is.
std::uint64_t ProductOfNumbers(std::string_view pattern) {
  std::uint64_t product = 1;
  for (std::size_t at = 0; at < pattern.size() && product <= kLargestProduct;) {
    std::uint64_t number = 0;
    for (; at < pattern.size() && pattern[at] >= '0' && pattern[at] <= '9'; ++at) {
      number = std::min(number * 10 + static_cast<std::uint64_t>(pattern[at] - '0'), kLargestProduct + 1);
    }
    product *= std::max<std::uint64_t>(number, 1);
    at += number == 0 ? 1 : 0;
  }
  return product;
}

// The facility takes exponential time; so little that it ends soon. A number that would overflow in it is
// kept from it.
bool IsQuickForTheFacility(const std::string& text, const std::string& pattern) {
  const auto is_choice = [](char character) {
    return std::string_view("*+?{|").find(character) != std::string_view::npos;
  };
  const auto choices = static_cast<std::size_t>(std::count_if(pattern.begin(), pattern.end(), is_choice));
  try {
    return text.size() * std::max<std::size_t>(choices, 1) <= 12 && DemandsOf(pattern).match_depth <= 30;
  } catch (const std::regex_error&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest = Fuzz::Input(data, size);
  const std::string pattern(Fuzz::TakeLine(rest));
  const std::string text(rest);
  if (pattern.size() > 64 || text.size() > 256 || ProductOfNumbers(pattern) > kLargestProduct) return 0;

  std::string matched = "before";
  const int outcome = Outcome([&] { return Utils::MatchString(text, pattern, &matched); });
  Require(matched == (outcome == 1 ? text : "before"),
          "the matched text is written on a match, and only then");
  if (IsLimit(outcome) || !IsQuickForTheFacility(text, pattern)) return 0;
  // The facility may meet a limit of its own before it sees what is wrong behind it.
  const int expected = Outcome([&] { return std::regex_match(text, std::regex(pattern)); });
  Require(outcome == expected || IsLimit(expected), "the facility says the same");
  const std::string balanced = BalancedPattern(Fuzz::Input(data, pattern.size()));
  const int regrouped = Outcome([&] { return Utils::MatchString(text, balanced, nullptr); });
  Require(regrouped == outcome || IsLimit(regrouped), "a balanced pattern means the same");
  return 0;
}
