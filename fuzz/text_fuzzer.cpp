// Compares the text and path functions with the simplest code that does the same. The input is three texts,
// separated by newlines.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "common/utils/matching.h"
#include "common/utils/paths.h"
#include "common/utils/text.h"
#include "fuzz/check.h"
#include "platform/autorelease_pool.h"

namespace {

using Fuzz::Require;
using Fuzz::Text;

// Whether `result`, which this frees, equals `expected`; null is no text.
bool Matches(char* result, const std::string* expected) {
  const std::unique_ptr<char, decltype(&std::free)> owner(result, &std::free);
  if (result == nullptr || expected == nullptr) return result == nullptr && expected == nullptr;
  return std::memcmp(result, expected->c_str(), expected->size() + 1) == 0;
}

bool Matches(char* result, const std::string& expected) {
  return Matches(result, &expected);
}

std::string Replaced(std::string text, const std::string& search, const std::string& replacement,
                     std::int32_t& count) {
  count = 0;
  if (search.empty()) return text;
  for (std::size_t at = text.find(search); at != std::string::npos;
       at = text.find(search, at + replacement.size())) {
    text.replace(at, search.size(), replacement);
    ++count;
  }
  return text;
}

void CheckReplaceStr(const std::string& text, const std::string& search, const std::string& replacement) {
  std::int32_t count = 0;
  const std::string expected = Replaced(text, search, replacement, count);
  std::string edited = text;
  Require(Utils::ReplaceStr(edited, Text(search).c_str(), Text(replacement).c_str()) == count &&
              edited == expected,
          "ReplaceStr");

  // The search text and the replacement inside the edited string.
  std::string own = text;
  const char* const own_search = own.c_str() + std::min(search.size(), own.size());
  const char* const own_replacement = own.c_str() + std::min(replacement.size(), own.size());
  const std::string expected_own = Replaced(text, own_search, own_replacement, count);
  Require(Utils::ReplaceStr(own, own_search, own_replacement) == count && own == expected_own,
          "ReplaceStr with texts inside the string");
}

void CheckReplaceChar(const std::string& text, char write, char find) {
  std::string expected = text;
  if (find != '\0') std::replace(expected.begin(), expected.end(), find, write);
  Require(Matches(Utils::ReplaceChar(Text(text).c_str(), write, find), expected), "ReplaceChar");
}

void CheckDeleteDelims(const std::string& text, const std::string& delimiters, const std::string& joiner) {
  std::string copy = text;
  std::string expected;
  char* position = nullptr;
  bool first = true;
  for (char* piece = ::strtok_r(copy.data(), delimiters.c_str(), &position); piece != nullptr;
       piece = ::strtok_r(nullptr, delimiters.c_str(), &position)) {
    if (!first) expected += joiner;
    expected += piece;
    first = false;
  }
  Require(Matches(Utils::DeleteDelims(Text(text).c_str(), Text(delimiters).c_str(), Text(joiner).c_str()),
                  expected.empty() ? nullptr : &expected),
          "DeleteDelims");
}

void CheckSplit(const std::string& text, char separator) {
  std::vector<std::string> expected = {"kept"};
  std::istringstream stream(text);
  for (std::string field; std::getline(stream, field, separator);) expected.push_back(field);
  std::vector<std::string> fields = {"kept"};
  Utils::SplitWithFlag(Text(text).c_str(), separator, fields);
  Require(fields == expected, "SplitWithFlag");
}

void CheckMemMem(std::string_view range, std::string_view pattern) {
  const std::vector<char> bytes(range.begin(), range.end());
  const std::vector<char> wanted(pattern.begin(), pattern.end());
  const auto found = std::search(bytes.begin(), bytes.end(), wanted.begin(), wanted.end());
  const bool none = wanted.empty() || found == bytes.end();
  Require(Utils::MemMem(bytes.data(), bytes.size(), wanted.data(), wanted.size()) ==
              (none ? nullptr : bytes.data() + (found - bytes.begin())),
          "MemMem");
}

int Sign(int value) {
  return (value > 0) - (value < 0);
}

void CheckCompare(const std::string& first, const std::string& second) {
  const auto lowered = [](std::string text) {
    for (char& byte : text) byte = static_cast<char>(std::tolower(static_cast<signed char>(byte)));
    return text;
  };
  const int order = Sign(lowered(first).compare(lowered(second)));
  const int result = Utils::CompareI(Text(first).c_str(), Text(second).c_str());
  const bool prefix =
      lowered(first).starts_with(lowered(second)) || lowered(second).starts_with(lowered(first));
  Require(prefix ? result == order : Sign(result) == order, "CompareI");
}

void CheckEnds(const std::string& text, const std::string& part) {
  const Text c_part(part);
  Require(Utils::StartWith(text, c_part.c_str()) == (text.find(part) == 0), "StartWith");
  const std::size_t last = text.rfind(part);
  Require(Utils::EndWith(text, c_part.c_str()) ==
              (last != std::string::npos && last == text.size() - part.size()),
          "EndWith");
}

void CheckPaths(const std::string& path, const std::string& name) {
  const AutoreleasePool pool;
  const Text c_path(path);
  Require(Utils::GetParentDir(c_path.c_str()) == path.substr(0, path.rfind('/') + 1), "GetParentDir");

  std::string slashes = path;
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  const std::string file = slashes.substr(slashes.rfind('/') + 1);
  Require(Utils::GetFileName(c_path.c_str()) == file, "GetFileName");
  Require(Utils::GetFileNameWithoutExt(c_path.c_str()) == path.substr(0, path.rfind('.')),
          "GetFileNameWithoutExt");
  const std::size_t dot = file.rfind('.');
  Require(Utils::GetFilePostfix(c_path.c_str()) == (dot == std::string::npos ? "" : file.substr(dot + 1)),
          "GetFilePostfix");

  const bool between = path.find('/') != std::string::npos && path.back() != '/';
  Require(
      Matches(Utils::ConcatFilePath(c_path.c_str(), Text(name).c_str()), path + (between ? "/" : "") + name),
      "ConcatFilePath");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest = Fuzz::Input(data, size);
  const std::string first(Fuzz::TakeLine(rest));
  const std::string second(Fuzz::TakeLine(rest));
  const std::string third(rest);
  // Cut at the first NUL. Functions that take a standard string or a length get the uncut texts.
  const std::string text = first.c_str();
  const std::string other = second.c_str();
  const std::string last = third.c_str();
  const char separator = second.empty() ? '\0' : second[0];

  CheckMemMem(first, second);
  CheckReplaceStr(first, other, last);
  CheckEnds(first, other);
  CheckReplaceChar(text, third.empty() ? '\0' : third[0], separator);
  CheckDeleteDelims(text, other, last);
  CheckSplit(text, separator);
  CheckCompare(text, other);
  CheckPaths(text, other);
  Require(Matches(Utils::ConcatStr(Text(text).c_str(), Text(other).c_str()), text + other), "ConcatStr");
  return 0;
}
