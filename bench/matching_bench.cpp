// Comparing, beginnings and ends, regular expressions.

#include <absl/strings/match.h>
#include <strings.h>

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <regex>
#include <string_view>

#include "common/utils/matching.h"
#include "comparison.h"
#include "sample_data.h"

namespace {

int Sign(int value) {
  return (value > 0) - (value < 0);
}

int CompareByBoost(std::string_view first, std::string_view second) {
  if (boost::ilexicographical_compare(first, second)) return -1;
  return boost::ilexicographical_compare(second, first) ? 1 : 0;
}

void CompareCompareI(const std::string& data, const std::string& first, const std::string& second) {
  Compare("CompareI", data, kLevel)
      .Ours([&] { return Sign(Utils::CompareI(first.c_str(), second.c_str())); })
      .Peer("strcasecmp", [&] { return Sign(::strcasecmp(first.c_str(), second.c_str())); })
      .Peer("boost::ilexicographical_compare", [&] { return CompareByBoost(first, second); })
      .Remark(
          "the folding is the locale's, asked byte by byte; strcasecmp has a vector form of its own for "
          "the plain locale");
}

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char byte) {
    return static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte);
  });
  return text;
}

void CompareBeginning(const std::string& data, const std::string& text, const std::string& prefix) {
  Compare("StartWith", data, kLevel)
      .Ours([&] { return Utils::StartWith(text, prefix.c_str()); })
      .Peer("absl::StartsWith", [&] { return absl::StartsWith(text, prefix.c_str()); });
}

void CompareEnd(const std::string& data, const std::string& text, const std::string& suffix) {
  Compare("EndWith", data, kLevel)
      .Ours([&] { return Utils::EndWith(text, suffix.c_str()); })
      .Peer("absl::EndsWith", [&] { return absl::EndsWith(text, suffix.c_str()); });
}

constexpr double kShortTexts = 1.05;
constexpr double kLongTexts = 3;

Comparison& CompareMatch(const std::string& data, const std::string& text, const std::string& pattern,
                         double ratio) {
  return Compare("MatchString", data, {ratio, kCallAllowance})
      .Ours([&] { return Utils::MatchString(text, pattern, nullptr); })
      .Peer("std::regex_match", [&] { return std::regex_match(text, std::regex(pattern)); })
      .Remark(
          ratio == kShortTexts
              ? "the same executor runs on both sides, with one or two hundredths more instructions on "
                "ours; what is beyond that differs from build to build, with the place its code gets"
              : "the quick executor takes stack for every byte, more than a small thread has for so many; "
                "the other one copies its results for every state it is in at every byte");
}

void CompareMatches() {
  const std::string& path = Kept("Library/Application Support/com.example.reader/pages.db");
  CompareMatch("a path of 55 bytes, .*\\.db", path, Kept(".*\\.db"), kShortTexts);
  CompareMatch("a path of 55 bytes, no match", path, Kept("Media/.*\\.jpe?g"), kShortTexts);
  CompareMatch("a date, digit classes", Kept("2023-11-14"), Kept("\\d{4}-\\d{2}-\\d{2}"), kShortTexts);
  CompareMatch("200 bytes of English, [a-z .]*", Kept(EnglishText(200)), Kept("[a-z .]*"), kShortTexts);
  // The default executor takes a stack frame for each byte, so the texts stay short of what its stack bears.
  for (std::size_t size = 4 * kKiB; size <= 16 * kKiB; size *= 2) {
    CompareMatch(SizeName(size) + " of English, [a-z .]*", Kept(EnglishText(size)), Kept("[a-z .]*"),
                 kLongTexts)
        .StepOf("one class");
  }
  for (std::size_t size = 4 * kKiB; size <= 16 * kKiB; size *= 2) {
    CompareMatch(SizeName(size) + " of English, .*device.*house.*", Kept(EnglishText(size)),
                 Kept(".*device.*house.*"), kLongTexts)
        .StepOf("three stars");
  }
}

}  // namespace

void CompareMatching() {
  const std::string& english = Kept(EnglishText(4 * kKiB));
  const std::string& name = Kept("Library/Preferences/com.example.reader.plist");
  CompareCompareI("two names, equal", name, Kept(std::string(name)));
  CompareCompareI("two names, equal but for case", name, Kept(Upper(name)));
  CompareCompareI("two names, different at once", name, Kept("Media/Recordings/0001.m4a"));
  CompareCompareI("4 KiB, equal", english, Kept(std::string(english)));
  CompareCompareI("4 KiB, equal but for case", english, Kept(Upper(english)));
  CompareCompareI("4 KiB, different at once", english, Kept("x" + english));

  const std::string& late = Kept(std::string(kMiB, 'a') + name + std::string(kMiB, 'a'));
  CompareBeginning("a path", name, Kept("Library/"));
  CompareBeginning("a path, other beginning", name, Kept("Media/"));
  CompareBeginning("2 MiB that hold the prefix in the middle", late, Kept("Library/"));
  CompareEnd("a path", name, Kept(".plist"));
  CompareEnd("a path, other end", name, Kept(".db"));
  CompareEnd("2 MiB that hold the suffix in the middle", late, Kept(".plist"));
  CompareMatches();
}
