#include "common/utils/matching.h"

#include <strings.h>

#include <cctype>
#include <cstring>
#include <string_view>

#include "common/text_or_empty.h"
#include "common/utils/pattern.h"

namespace {

// Folds as the locale does, whether or not plain char has a sign here.
unsigned char Folded(char byte) {
  return static_cast<unsigned char>(std::tolower(static_cast<signed char>(byte)));
}

// Whether strcasecmp folds every byte as Folded does. glibc's reads the same table of the locale, but with
// unsigned indexes. Both halves of the table agree but for -1, which is EOF: KOI8-R folds 0xFF and not -1.
// Reading the table instead of calling tolower saves a tenth of what CompareI adds to strcasecmp.
bool StrcasecmpFoldsAlike() {
#ifdef __GLIBC__
  return (*::__ctype_tolower_loc())[0xFF] == 0xFF;
#else
  return false;
#endif
}

// Out of line, so that CompareI saves no registers for it.
[[gnu::noinline]] std::int32_t CompareFolded(const char* first, const char* second) {
  for (;; ++first, ++second) {
    if (*first == '\0' || *second == '\0') return (*first != '\0') - (*second != '\0');
    if (*first == *second) continue;
    const int difference = Folded(*first) - Folded(*second);
    if (difference != 0) return difference;
  }
}

}  // namespace

std::int32_t Utils::CompareI(const char* first, const char* second) {
  first = TextOrEmpty(first);
  second = TextOrEmpty(second);
  if (!StrcasecmpFoldsAlike()) return CompareFolded(first, second);
  const int order = ::strcasecmp(first, second);
  return (order > 0) - (order < 0);
}

bool Utils::StartWith(const std::string& text, const char* prefix) {
  return prefix != nullptr && std::string_view(text).starts_with(prefix);
}

bool Utils::EndWith(const std::string& text, const char* suffix) {
  return suffix != nullptr && std::string_view(text).ends_with(suffix);
}

bool Utils::MatchString(const std::string& text, const std::string& pattern, std::string* matched) {
  if (!Matching::Pattern(pattern).MatchesWhole(text)) return false;
  if (matched != nullptr) *matched = text;
  return true;
}
