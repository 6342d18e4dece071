// Internal. A regular expression (ECMAScript, std::regex) that can be used with untrusted patterns and texts:
// neither overflows the caller's stack or runs without end.
//
//   Matching::Pattern pattern(".*\\.pdf");  // compiled once
//   pattern.MatchesWhole("report.pdf")      // true

#pragma once

#include <cstddef>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace Matching {

// Each object is for one thread at a time.
class Pattern {
 public:
  // Both throw std::regex_error as Utils::MatchString documents.
  explicit Pattern(const std::string& pattern);
  bool MatchesWhole(const std::string& text);

 private:
  // A character, class, assertion or group, with its repetitions.
  struct Term {
    double stack = 0;  // bytes that compiling, or matching between two comparisons, may need
    double size = 0;   // characters, with counted repetitions written out
    bool is_group = false;
    bool is_repeated = false;

    void Repeat(double copies);
  };

  Term MeasureGroup(std::size_t& at);
  std::size_t StackForMatching() const;

  std::string pattern_;
  Term whole_;
  bool has_look_ahead_ = false;
  std::vector<std::size_t> back_references_;  // their indices
  std::regex regex_;
  std::optional<std::regex> polynomial_;  // made when the default executor has exceeded its budget
};

}  // namespace Matching
