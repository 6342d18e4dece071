// Comparing, beginnings and ends, regular expressions.

#include "common/utils/matching.h"

#include <absl/strings/match.h>
#include <strings.h>

#include <cctype>
#include <memory>
#include <regex>

#include "bench.h"

namespace {

void BenchCompareI(const std::string& data, const char* goal, const std::string& first,
                   const std::string& second) {
  // Not copied for each job: a text that crosses a page costs a nanosecond more.
  const auto texts = std::make_shared<const std::pair<std::string, std::string>>(first, second);
  for (const char* const locale : {"C", "C.UTF-8"}) {
    if (std::setlocale(LC_ALL, locale) == nullptr) continue;  // macOS has no C.UTF-8 before release 15
    Compare(
        "CompareI/" + data + ", " + locale, goal,
        [=] { return Utils::CompareI(texts->first.c_str(), texts->second.c_str()); },
        Peer{"strcasecmp", [=] { return ::strcasecmp(texts->first.c_str(), texts->second.c_str()); }});
  }
  std::setlocale(LC_ALL, "C");
}

std::string Upper(std::string text) {
  for (char& byte : text) byte = static_cast<char>(std::toupper(byte));
  return text;
}

void BenchCompareIs() {
  static constexpr char kLongGoal[] = "1.3";
  const std::string name = "Library/Preferences/com.example.reader.v2.plist";
  const std::string text = EnglishText(64 * kKiB);
  BenchCompareI("11 bytes, other case", kCallGoal, "Preferences", "PREFERENCES");
  BenchCompareI("46 bytes, other case", kCallGoal, name.substr(1), Upper(name.substr(1)));
  BenchCompareI("46 bytes, equal", kCallGoal, name.substr(1), name.substr(1));
  BenchCompareI("a prefix of 11 bytes", kCallGoal, "Preferences", "PREFERENCES/com.example");
  BenchCompareI("different first bytes", kCallGoal, name, "Media/Recordings/0001.m4a");
  BenchCompareI("64 KiB, other case", kLongGoal, text, Upper(text));
  BenchCompareI("64 KiB, different last bytes", kLongGoal, text + "x", text + "y");
}

void BenchEnds(const std::string& data, const std::string& text, const std::string& prefix,
               const std::string& suffix) {
  Compare(
      "StartWith/" + data, kCallGoal, [=] { return Utils::StartWith(text, prefix.c_str()); },
      Peer{"absl::StartsWith", [=] { return absl::StartsWith(text, prefix.c_str()); }});
  Compare(
      "EndWith/" + data, kCallGoal, [=] { return Utils::EndWith(text, suffix.c_str()); },
      Peer{"absl::EndsWith", [=] { return absl::EndsWith(text, suffix.c_str()); }});
}

// The whole call: the pattern is compiled every time.
void BenchMatch(const std::string& data, const char* goal, const std::string& text,
                const std::string& pattern) {
  Compare(
      "MatchString/" + data, goal, [=] { return Utils::MatchString(text, pattern, nullptr); },
      Peer{"std::regex_match", [=] { return std::regex_match(text, std::regex(pattern)); }});
}

void BenchMatches() {
  static constexpr char kShortGoal[] = "1.15";
  static constexpr char kLongGoal[] = "2.5";  // where the stack is too small for the default executor
  const std::string path = "Library/Application Support/com.example.reader/pages.db";
  BenchMatch("20 bytes, digit classes", kShortGoal, "2023-11-14 at 07:30h", "\\d{4}-\\d{2}-\\d{2} at .*");
  BenchMatch("55 bytes, .*\\.db", kShortGoal, path, ".*\\.db");
  BenchMatch("55 bytes, no match", kShortGoal, path, "Media.*\\.jpe?g");
  BenchMatch("200 bytes, one class", kShortGoal, EnglishText(200), "[A-Za-z ,.]*");
  BenchMatch("200 bytes, three stars", kShortGoal, EnglishText(200), ".*the.*he.*");
  for (const std::size_t size : {2 * kKiB, 10 * kKiB}) {
    BenchMatch(SizeName(size) + ", one class", kLongGoal, EnglishText(size), "[A-Za-z ,.]*");
    BenchMatch(SizeName(size) + ", three stars", kLongGoal, EnglishText(size), ".*device.*house.*");
  }
}

const bool kRegistered = [] {
  BenchCompareIs();
  const std::string name = "Library/Preferences/com.example.reader.plist";
  BenchEnds("a path", name, "Library/", ".plist");
  BenchEnds("a path, no match", name, "Media/", ".db");
  BenchEnds("longer than the text", "Library/x.plist", name, name);
  BenchEnds("1 MiB", EnglishText(kMiB), "The house", "letter");
  BenchMatches();
  return true;
}();

}  // namespace
