// Joining, replacing, splitting, searching.

#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <stdio.h>  // asprintf
#include <string.h>

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <boost/algorithm/string/split.hpp>
#include <functional>
#include <sstream>
#include <string_view>

#include "common/utils/text.h"
#include "comparison.h"
#include "sample_data.h"

namespace {

const void* FoundAt(std::string_view range, std::size_t place) {
  return place != std::string_view::npos ? range.data() + place : nullptr;
}

void CompareMemMem(const std::string& data, const std::string& range, const std::string& pattern,
                   const std::string& remark = {}) {
  const auto horspool = [&range, &pattern]() -> const void* {
    const auto place = std::search(range.begin(), range.end(),
                                   std::boyer_moore_horspool_searcher(pattern.begin(), pattern.end()));
    return place != range.end() ? &*place : nullptr;
  };
  Compare("MemMem", data, kLevel)
      .Ours([&] { return Utils::MemMem(range.data(), range.size(), pattern.data(), pattern.size()); })
      .Peer("memmem",
            [&]() -> const void* {
              return ::memmem(range.data(), range.size(), pattern.data(), pattern.size());
            })
      .Peer("string_view::find", [&] { return FoundAt(range, std::string_view(range).find(pattern)); })
      .Peer("Boyer-Moore-Horspool", horspool)
      .Remark(remark);
}

void CompareMemMems() {
  const std::string& random = Kept(RandomBytes(kMiB));
  const std::string& english = Kept(EnglishText(kMiB));
  const std::string& short_text = Kept(EnglishText(100));
  // Its letters are common, yet none of its beginnings stands in the text.
  const std::string sentence = "she stood there in the rain and asked him whether he had seen the ship";
  CompareMemMem("1 byte in 1 MiB of English", english, Kept("Q"));
  for (const std::size_t length : {2U, 4U, 8U, 16U, 64U}) {
    const std::string size = std::to_string(length) + " bytes in 1 MiB of ";
    const std::string why =
        length < 16
            ? ""
            : "a pattern of this length lets a searcher with a table of its bytes skip nearly all of the "
              "text; this is a plain scan without tables";
    // Not a part of the random bytes but by a chance that only short ones have.
    CompareMemMem(size + "random bytes", random, Kept(RandomBytes(length + 3).substr(3) + 'Q'), why);
    CompareMemMem(size + "English", english, Kept(sentence.substr(0, length)), why);
  }
  CompareMemMem("6 bytes in 100 bytes of English", short_text, Kept("thousan"));
  const std::string& pattern = Kept(std::string(15, 'a') + 'b');
  CompareMemMem("16 bytes in 64 KiB that nearly match everywhere, at the end",
                Kept(std::string(64 * kKiB, 'a') + 'b'), pattern);
  CompareMemMem("16 bytes in 64 KiB that nearly match everywhere, in the middle",
                Kept(Repeated("aaaaaaaacaaaaaaab", 64 * kKiB)), Kept("aaaaaaaabaaaaaaa"),
                "a plain scan compares the pattern at every position");
}

// Edits a copy of the text, which costs everybody the same.
template <typename Edit>
auto Edited(const std::string& text, Edit edit) {
  return [&text, edit] {
    std::string copy = text;
    edit(copy);
    return copy;
  };
}

void ReplaceOneByOne(std::string& text, std::string_view search, std::string_view replacement) {
  for (std::size_t at = text.find(search); at != std::string::npos;
       at = text.find(search, at + replacement.size())) {
    text.replace(at, search.size(), replacement);
  }
}

Comparison& CompareReplaceStr(const std::string& data, const std::string& text, const char* search,
                              const char* replacement, bool quadratic_too) {
  Comparison& comparison = Compare("ReplaceStr", data, kLevel);
  comparison.Ours(Edited(text, [=](std::string& copy) { Utils::ReplaceStr(copy, search, replacement); }))
      .Peer("absl::StrReplaceAll", Edited(text,
                                          [=](std::string& copy) {
                                            absl::StrReplaceAll({{search, replacement}}, &copy);
                                          }))
      .Peer("boost::replace_all",
            Edited(text, [=](std::string& copy) { boost::replace_all(copy, search, replacement); }));
  if (quadratic_too) {
    comparison.Peer("find and replace",
                    Edited(text, [=](std::string& copy) { ReplaceOneByOne(copy, search, replacement); }));
  }
  return comparison;
}

void CompareReplacements() {
  const std::string& english = Kept(EnglishText(64 * kKiB));
  const std::string& path = Kept("Library/Caches/com.example.reader/pages.db");
  CompareReplaceStr("a path of 42 bytes, 2 matches", path, ".", "_", true);
  CompareReplaceStr("64 KiB, no match", english, "she saw", "they saw", true);
  CompareReplaceStr("64 KiB, no match, nor its first byte", english, "zebra", "horse", true)
      .Remark(
          "where the first byte stands nowhere, the platform's search for one byte does it all, in wider "
          "instructions than a program for every processor may use");
  CompareReplaceStr("64 KiB, few matches, shorter", english, "thousand", "many", true);
  CompareReplaceStr("64 KiB, few matches, equal", english, "thousand", "hundreds", true);
  CompareReplaceStr("64 KiB, few matches, longer", english, "thousand", "a thousand", true);
  CompareReplaceStr("64 KiB, many matches, shorter", english, "the", "a", true);
  CompareReplaceStr("64 KiB, many matches, equal", english, "e", "E", true);
  CompareReplaceStr("64 KiB, many matches, longer", english, "e", "ee", true);
  for (std::size_t size = kMiB; size <= 8 * kMiB; size *= 2) {
    const std::string& dense = Kept(Repeated("abcd, ", size));
    CompareReplaceStr(SizeName(size) + ", a match every 6 bytes, longer", dense, ", ", " and ", false)
        .StepOf("longer");
  }
  for (std::size_t size = kMiB; size <= 8 * kMiB; size *= 2) {
    const std::string& dense = Kept(Repeated("abcd, ", size));
    CompareReplaceStr(SizeName(size) + ", a match every 6 bytes, shorter", dense, ", ", "", false)
        .StepOf("shorter");
  }
}

std::vector<std::string> SplitByGetline(const std::string& text, char separator) {
  std::vector<std::string> fields;
  std::stringstream stream(text);
  for (std::string field; std::getline(stream, field, separator);) fields.push_back(field);
  return fields;
}

Comparison& CompareSplit(const std::string& data, const std::string& text, bool with_slow_ones) {
  Comparison& comparison = Compare("SplitWithFlag", data, kWellAhead);
  comparison
      .Ours([&text] {
        std::vector<std::string> fields;
        Utils::SplitWithFlag(text.c_str(), ',', fields);
        return fields;
      })
      .Peer("absl::StrSplit", [&text] { return std::vector<std::string>(absl::StrSplit(text, ',')); });
  if (with_slow_ones) {
    comparison.Peer("std::getline", [&text] { return SplitByGetline(text, ','); });
    comparison.Peer("boost::split", [&text] {
      std::vector<std::string> fields;
      boost::split(fields, text, boost::is_any_of(","));
      return fields;
    });
  }
  return comparison;
}

void CompareSplits() {
  CompareSplit("3 fields", Kept("HomeDomain,Library/notes.db,1700000000"), true);
  CompareSplit("1 KiB, fields of 7 bytes", Kept(Repeated("abcdefg,", kKiB) + "x"), true);
  CompareSplit("64 KiB, fields of 7 bytes", Kept(Repeated("abcdefg,", 64 * kKiB) + "x"), true);
  CompareSplit("64 KiB, fields of 40 bytes",
               Kept(Repeated("0123456789012345678901234567890123456789,", 64 * kKiB) + "x"), true)
      .Remark("fields too long to lie in the string itself take a block each, and that costs everybody most");
  for (std::size_t size = kMiB; size <= 8 * kMiB; size *= 2) {
    CompareSplit(SizeName(size) + ", fields of 3 bytes", Kept(Repeated("abc,", size) + "x"), false)
        .StepOf("short fields");
  }
}

Text DeleteByTokens(const char* text, const char* delimiters, const char* joiner) {
  const Text copy(::strdup(text));
  std::string result;
  char* position = nullptr;
  for (const char* piece = ::strtok_r(copy.get(), delimiters, &position); piece != nullptr;
       piece = ::strtok_r(nullptr, delimiters, &position)) {
    if (!result.empty()) result += joiner;
    result += piece;
  }
  return Text(result.empty() ? nullptr : ::strdup(result.c_str()));
}

void CompareDeleteDelims(const std::string& data, const std::string& text, const char* delimiters) {
  Compare("DeleteDelims", data, kWellAhead)
      .Ours([=, &text] { return Text(Utils::DeleteDelims(text.c_str(), delimiters, "-")); })
      .Peer("strtok_r", [=, &text] { return DeleteByTokens(text.c_str(), delimiters, "-"); });
}

Text JoinByPrint(const std::string& first, const std::string& second) {
  char* joined = nullptr;
  return Text(::asprintf(&joined, "%s%s", first.c_str(), second.c_str()) >= 0 ? joined : nullptr);
}

void CompareConcatStr(const std::string& data, const std::string& first, const std::string& second) {
  Compare("ConcatStr", data, kLevel)
      .Ours([&] { return Text(Utils::ConcatStr(first.c_str(), second.c_str())); })
      .Peer("asprintf", [&] { return JoinByPrint(first, second); });
}

void CompareReplaceChar(const std::string& data, const std::string& text) {
  Compare("ReplaceChar", data, kLevel)
      .Ours([&] { return Text(Utils::ReplaceChar(text.c_str(), '_', ' ')); })
      .Peer("strdup and std::replace", [&] {
        Text copy(::strdup(text.c_str()));
        std::replace(copy.get(), copy.get() + text.size(), ' ', '_');
        return copy;
      });
}

}  // namespace

void CompareTexts() {
  CompareConcatStr("two short texts", Kept("Library/"), Kept("notes.db"));
  CompareConcatStr("two texts of 64 KiB", Kept(EnglishText(64 * kKiB)), Kept(RandomBytes(64 * kKiB)));
  CompareReplaceChar("40 bytes", Kept(EnglishText(40)));
  CompareReplaceChar("64 KiB", Kept(EnglishText(64 * kKiB)));
  CompareReplacements();
  CompareDeleteDelims("a phone number", Kept("(555) 010-0199"), " ()-");
  CompareDeleteDelims("64 KiB of English", Kept(EnglishText(64 * kKiB)), " .,;");
  CompareDeleteDelims("64 KiB, fields of 100 bytes", Kept(Repeated(std::string(100, 'a') + ',', 64 * kKiB)),
                      ",");
  CompareSplits();
  CompareMemMems();
}
