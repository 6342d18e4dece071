// Joining, replacing, splitting, searching.

#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <stdio.h>  // asprintf
#include <string.h>

#include <vector>

#include "bench.h"
#include "common/utils/text.h"

namespace {

void BenchMemMem(const std::string& data, const std::string& range, const std::string& pattern) {
  const auto ours = [=] { return Utils::MemMem(range.data(), range.size(), pattern.data(), pattern.size()); };
  const auto find = [=] { return std::string_view(range).find(pattern); };
  const auto memmem = [=] { return ::memmem(range.data(), range.size(), pattern.data(), pattern.size()); };
  const std::string sizes = std::to_string(pattern.size()) + " in " + SizeName(range.size());
  Compare("MemMem/" + sizes + ", " + data + (ours() != nullptr ? ", found" : ", absent"),
          range.size() < kKiB ? kCallGoal : kEqualGoal, ours, Peer{"string_view::find", find},
          Peer{"memmem", memmem});
}

// `aaab` data: the range and the pattern are letters a with a b at the end.
void BenchMemMems() {
  const auto aaab = [](std::size_t size) { return std::string(size - 1, 'a') + 'b'; };
  const std::string phrase = "then a house by the river, and it seemed to him that the winter would";
  const std::string line = EnglishText(64);
  for (const std::size_t length : {2U, 4U, 16U}) {
    BenchMemMem("random", RandomBytes(64), RandomBytes(length, 3));
    BenchMemMem("English", line, line.substr(64 - length));
    BenchMemMem("English", line, phrase.substr(0, length - 1) + 'Q');
    BenchMemMem("aaab", aaab(64), aaab(length));
  }
  for (const std::size_t length : {2U, 4U, 8U, 16U, 32U, 64U})
    BenchMemMem("random", RandomBytes(4 * kKiB), RandomBytes(length, 4));
  for (const std::size_t length : {4U, 16U}) {
    BenchMemMem("English", EnglishText(4 * kKiB), phrase.substr(0, length));
    BenchMemMem("aaab", aaab(4 * kKiB), aaab(length));
  }
  for (const std::size_t length : {4U, 16U, 64U}) {
    BenchMemMem("random", RandomBytes(kMiB), RandomBytes(length, 5));
    BenchMemMem("English", EnglishText(kMiB), phrase.substr(0, length));
  }
  BenchMemMem("aaab", aaab(kMiB), aaab(16));
  // Patterns that nearly match everywhere, the difference at an end or in the middle.
  BenchMemMem("b in the middle", Repeated("aaaaaaaacaaaaaaab", kMiB), "aaaaaaaabaaaaaaa");
  BenchMemMem("b first", std::string(kMiB, 'a'), 'b' + std::string(63, 'a'));
  BenchMemMem("period of 2", Repeated("ab", kMiB), Repeated("ab", 62) + "bb");
}

void FindAndReplace(std::string& text, std::string_view search, std::string_view replacement) {
  for (std::size_t at = text.find(search); at != std::string::npos;
       at = text.find(search, at + replacement.size())) {
    text.replace(at, search.size(), replacement);
  }
}

void BenchReplaceStr(const std::string& data, const std::string& text, const std::string& search,
                     const std::string& replacement) {
  // Edits a copy of the text: copying costs every contender the same.
  const auto job = [&](auto edit) {
    return [=] {
      std::string copy = text;
      edit(copy, search.c_str(), replacement.c_str());
      return copy;
    };
  };
  const auto absl = [](std::string& copy, const char* from, const char* to) {
    absl::StrReplaceAll({{from, to}}, &copy);
  };
  const auto size = replacement.size() <=> search.size();
  Compare("ReplaceStr/" + data +
              (size == 0  ? ", equal"
               : size > 0 ? ", longer"
                          : ", shorter"),
          kEqualGoal, job(Utils::ReplaceStr), Peer{"find and replace", job(FindAndReplace)},
          Peer{"absl::StrReplaceAll", job(absl)});
}

// `count` matches at equal distances.
std::string WithMatches(std::string text, std::size_t count, std::string_view match) {
  for (std::size_t i = 0; i < count; ++i) {
    text.replace(i * (text.size() / count) + 9, match.size(), match);
  }
  return text;
}

void BenchReplaceStrs() {
  for (const char* const replacement : {"12345678", "1234567890ab", "1234"}) {
    const auto bench = [=](const std::string& data, std::size_t count, const std::string& text) {
      const std::string name = SizeName(text.size()) + ' ' + data + ", " + std::to_string(count) + " matches";
      BenchReplaceStr(name, WithMatches(text, count, "{search}"), "{search}", replacement);
    };
    bench("random", 16, RandomBytes(kMiB));
    bench("random", 40, RandomBytes(4 * kKiB));
    bench("English", 40, EnglishText(4 * kKiB));
    bench("English", 3, EnglishText(200));
  }
  BenchReplaceStr("64 KiB English, no match", EnglishText(64 * kKiB), "zebra", "horse");
  BenchReplaceStr("64 KiB English, each e", EnglishText(64 * kKiB), "e", "E");
  BenchReplaceStr("64 KiB English, each the", EnglishText(64 * kKiB), "the", "a");
  BenchReplaceStr("64 KiB aaab, one match", std::string(64 * kKiB, 'a') + 'b', std::string(15, 'a') + 'b',
                  "");
  BenchReplaceStr("64 KiB, a match in 6 bytes", Repeated("abcd, ", 64 * kKiB), ", ", " and ");
}

void BenchSplitWithFlag(const std::string& data, const std::string& text) {
  const auto ours = [=] {
    std::vector<std::string> fields;
    Utils::SplitWithFlag(text.c_str(), ',', fields);
    return fields;
  };
  const auto absl = [=] { return std::vector<std::string>(absl::StrSplit(text, ',')); };
  Compare("SplitWithFlag/" + data, kEqualGoal, ours, Peer{"absl::StrSplit", absl});
}

std::string DeleteByTokens(std::string text, const char* delimiters, const char* joiner) {
  std::string result;
  char* position = nullptr;
  for (const char* piece = ::strtok_r(text.data(), delimiters, &position); piece != nullptr;
       piece = ::strtok_r(nullptr, delimiters, &position)) {
    if (!result.empty()) result += joiner;
    result += piece;
  }
  return result;
}

void BenchDeleteDelims(const std::string& data, const std::string& text, const char* delimiters) {
  Compare(
      "DeleteDelims/" + data, kEqualGoal,
      [=] { return Block(Utils::DeleteDelims(text.c_str(), delimiters, "-")); },
      Peer{"strtok_r", [=] { return DeleteByTokens(text, delimiters, "-"); }});
}

void BenchConcatStr(const std::string& data, const std::string& first, const std::string& second) {
  const auto ours = [=] { return Block(Utils::ConcatStr(first.c_str(), second.c_str())); };
  const auto asprintf = [=] {
    char* joined = nullptr;
    return Block(::asprintf(&joined, "%s%s", first.c_str(), second.c_str()) >= 0 ? joined : nullptr);
  };
  Compare("ConcatStr/" + data, kCallGoal, ours, Peer{"asprintf", asprintf});
}

void BenchReplaceChar(const std::string& data, const std::string& text) {
  const auto ours = [=] { return Block(Utils::ReplaceChar(text.c_str(), '_', ' ')); };
  const auto strchr = [=] {
    Block copy(::strdup(text.c_str()));
    for (char* at = copy.get(); (at = ::strchr(at, ' ')) != nullptr;) *at++ = '_';
    return copy;
  };
  Compare("ReplaceChar/" + data, text.size() < kKiB ? kCallGoal : kEqualGoal, ours,
          Peer{"strdup and strchr", strchr});
}

const bool kRegistered = [] {
  BenchConcatStr("two short texts", "Library/", "notes.db");
  BenchConcatStr("two texts of 64 KiB", EnglishText(64 * kKiB), RandomBytes(64 * kKiB));
  BenchReplaceChar("40 bytes of English", EnglishText(40));
  BenchReplaceChar("64 KiB of English", EnglishText(64 * kKiB));
  BenchReplaceChar("64 KiB without the character", Repeated("abcdefghijk", 64 * kKiB));
  BenchReplaceStrs();
  BenchDeleteDelims("a phone number", "(555) 010-0199", " ()-");
  BenchDeleteDelims("64 KiB of English", EnglishText(64 * kKiB), " .,");
  BenchSplitWithFlag("3 fields", "HomeDomain,Library/notes.db,1700000000");
  BenchSplitWithFlag("64 KiB, fields of 7 bytes", Repeated("abcdefg,", 64 * kKiB) + "x");
  BenchSplitWithFlag("64 KiB, fields of 40 bytes",
                     Repeated("0123456789012345678901234567890123456789,", 64 * kKiB) + "x");
  BenchMemMems();
  return true;
}();

}  // namespace
