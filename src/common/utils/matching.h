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
// Pattern and text may be untrusted. With libstdc++ no call overflows the stack, and none takes longer than a
// second or two (five for a text of 10 MB). Beyond the bounds it throws std::regex_error with the code
//   error_stack       when the pattern may need over half of the stack that the thread has left, less 64 KiB:
//                     160 bytes for each alternative and each character of the longest one, 960 for each
//                     group, all of it as often as a counted group repeats; with a back-reference also for
//                     long texts (more than 200 characters on a stack of 512 KiB)
//   error_space       when the pattern, with counted repetitions written out, has over 20,000 characters
//   error_complexity  for a back-reference after ambiguous repetitions, as in (a*)*\1; for a look-ahead that
//                     reads far ahead at every character of a long text; for texts of a million characters
//                     and more that the pattern can match in very many ways
// With libc++ the bounds of the pattern are the same. Those of the text are its own: some 4,000 steps, up to
// 0.2 milliseconds, for each character, and as many again for every look-ahead that it enters.
HOSTUTIL_EXPORT bool MatchString(const std::string& text, const std::string& pattern, std::string* matched);

}  // namespace Utils
