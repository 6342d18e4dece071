#include "common/utils/paths.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "common/owners.h"
#include "common/text_or_empty.h"
#include "common/utils/text.h"
#include "platform/foundation.h"

namespace {

// The part of `path` after the last of `separators`; all of it when there is none.
std::string_view AfterLast(std::string_view path, const char* separators) {
  return path.substr(path.find_last_of(separators) + 1);  // npos + 1 is 0
}

std::string CutAtLastSlash(std::string_view path) {
  return std::string(path.substr(0, path.rfind('/') + 1));
}

}  // namespace

std::string Utils::GetParentDir(const char* path) {
  path = TextOrEmpty(path);
  Foundation::String* const text = Foundation::StringWithUtf8(path);
  if (text == nullptr) return CutAtLastSlash(path);
  const std::size_t slash = Foundation::LastRangeOf(text, Foundation::StringWithUtf8("/"));
  if (slash == Foundation::kNotFound) return {};
  return Foundation::Utf8(Foundation::LeadingSubstring(text, slash + 1));
}

std::string Utils::GetFileName(const char* path) {
  return std::string(AfterLast(TextOrEmpty(path), "/\\"));
}

std::string Utils::GetFileNameWithoutExt(const char* path) {
  const std::string_view text = TextOrEmpty(path);
  return std::string(text.substr(0, text.rfind('.')));
}

std::string Utils::GetFilePostfix(const char* path) {
  const std::string name = GetFileName(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

char* Utils::ConcatFilePath(const char* directory, const char* name) {
  directory = TextOrEmpty(directory);
  const char* const slash = std::strrchr(directory, '/');
  if (slash == nullptr || slash[1] == '\0') return ConcatStr(directory, name);
  const Owners::Block with_slash(ConcatStr(directory, "/"));
  return with_slash != nullptr ? ConcatStr(with_slash.get(), name) : nullptr;
}

std::string Utils::GetFileCreateTime(const char* /*unused*/, const char* /*unused*/) {
  return {};
}
