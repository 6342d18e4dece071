// Compares MatchString with the standard facility. The input is a pattern, a newline and a text.

#include <algorithm>
#include <cstdint>
#include <regex>
#include <string>
#include <string_view>

#include "common/utils/matching.h"
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

// The product of all numbers in the pattern: with a large one the facility builds thousands of states.
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

// Whether the facility's exponential time is short enough.
bool IsQuickForTheFacility(const std::string& text, const std::string& pattern) {
  const auto is_choice = [](char character) {
    return std::string_view("*+?{|").find(character) != std::string_view::npos;
  };
  const auto choices = static_cast<std::size_t>(std::count_if(pattern.begin(), pattern.end(), is_choice));
  return std::max<std::size_t>(text.size(), 1) * std::max<std::size_t>(choices, 1) <= 12 &&
         ProductOfNumbers(pattern) <= 12;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest = Fuzz::Input(data, size);
  const std::string pattern(Fuzz::TakeLine(rest));
  const std::string text(rest);
  if (pattern.size() > 64 || text.size() > 256 || ProductOfNumbers(pattern) > kLargestProduct) return 0;

  std::string matched = "before";
  const int outcome = Outcome([&] { return Utils::MatchString(text, pattern, &matched); });
  Require(matched == (outcome == 1 ? text : "before"), "the text is copied on a match, and only then");
  if (IsLimit(outcome) || !IsQuickForTheFacility(text, pattern)) return 0;
  // The facility may reach a limit of its own before it finds the error in the rest of the pattern.
  const int expected = Outcome([&] { return std::regex_match(text, std::regex(pattern)); });
  Require(outcome == expected || IsLimit(expected), "the facility gives the same answer");
  return 0;
}
