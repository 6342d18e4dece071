// MatchString against the standard facility itself. The input is a pattern, a newline and a text.

#include <regex>
#include <string>

#include "common/utils/matching.h"
#include "common/utils/pattern_limits.h"
#include "fuzz/check.h"

namespace {

using Fuzz::Require;

constexpr int kRefused = 1000;

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

// The facility takes exponential time; so little that it ends soon. A number that would overflow in it is
// kept from it.
bool IsQuickForTheFacility(const std::string& text, const std::string& pattern) {
  try {
    return text.size() <= 6 && pattern.size() <= 24 && DemandsOf(pattern).match_depth <= 30;
  } catch (const std::regex_error&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  std::string_view rest = Fuzz::Input(data, size);
  const std::string pattern(Fuzz::TakeLine(rest));
  const std::string text(rest);

  std::string matched = "before";
  const int outcome = Outcome([&] { return Utils::MatchString(text, pattern, &matched); });
  Require(matched == (outcome == 1 ? text : "before"),
          "the matched text is written on a match, and only then");
  if (IsLimit(outcome) || !IsQuickForTheFacility(text, pattern)) return 0;
  // The facility may meet a limit of its own before it sees what is wrong behind it.
  const int expected = Outcome([&] { return std::regex_match(text, std::regex(pattern)); });
  Require(outcome == expected || IsLimit(expected), "the facility says the same");
  const std::string balanced = BalancedPattern(Fuzz::Input(data, pattern.size()));
  Require(outcome == Outcome([&] { return Utils::MatchString(text, balanced, nullptr); }),
          "a balanced pattern means the same");
  return 0;
}
