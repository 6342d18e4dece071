// Comparing texts without case, testing how they begin and end, and matching them against regular
// expressions.
//
//   Utils::CompareI("Hello", "hELLO")                      // 0
//   Utils::StartWith("abc", "ab")                          // true
//   Utils::MatchString("report.pdf", ".*\\.pdf", nullptr)  // true: the whole text must match

#pragma once

#include <cstdint>
#include <string>

#include "common/export.h"

namespace Utils {

// Below zero, zero or above zero as `first` sorts before, with or after `second` once every byte is folded by
// the process's locale (std::tolower of the byte as a signed char); exactly -1 or 1 when one is the beginning
// of the other. Letters beyond ASCII in UTF-8 are not folded. Stops at the first difference. A null text
// counts as the empty one.
HOSTUTIL_EXPORT std::int32_t CompareI(const char* first, const char* second);

// Whether `text` begins, or ends, with the other text. The empty one always fits; null never does.
HOSTUTIL_EXPORT bool StartWith(const std::string& text, const char* prefix);
HOSTUTIL_EXPORT bool EndWith(const std::string& text, const char* suffix);

// Whether the whole of `text` matches `pattern`, an ECMAScript regular expression; classes follow the global
// locale. On a match, and when `matched` is not null, the text is copied there; otherwise `matched` stays as
// it was. Throws std::regex_error for a bad pattern and std::bad_alloc. The pattern is compiled at every
// call.
//
// Pattern and text may be untrusted. Beyond these bounds std::regex_error is thrown, with the code
//   error_stack       for a pattern that needs more than 3/8 of the stack that the thread has left: 160 bytes for each
//                     character of its longest alternative and for each alternative, 960 for each group on the way,
//                     those in counted groups as often as counted; and, with a back-reference, for a long text (more
//                     than 200 characters on a stack of 512 KiB)
//   error_space       for a pattern of more than 20,000 characters, counted repetitions written out
//   error_complexity  for a back-reference behind ambiguous repetitions, as in (a*)*\1; for a look-ahead that reads far
//                     ahead at every character of a long text; for texts of a million characters and more under
//                     patterns that match them in very many ways
// Without back-references the time is linear in the text: at most a second or two, and five for a text of 10 MB.
// libc++ takes the pattern's bounds from here, and throws error_complexity for texts by its own measure.
HOSTUTIL_EXPORT bool MatchString(const std::string& text, const std::string& pattern, std::string* matched);

}  // namespace Utils
