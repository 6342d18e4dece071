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
// Pattern and text may come from anywhere. Matching takes time linear in the text and less stack than the
// smallest thread has by default (512 KiB); what cannot be had at that price ends in std::regex_error:
//   error_stack       groups nested some 80 deep, look-aheads some 50; some 250 parts side by side that may
//                     all be empty, as in a?b?c?...; a text of more than a few hundred characters under a
//                     pattern with a back-reference
//   error_complexity  a look-ahead that reads on to the end again and again from everywhere in a long text; a
//                     back-reference after ambiguous repetitions, as in (a*)*\1, or after a good many parts
//                     that may be empty
//   error_space       a pattern that stands for some 100,000 characters, counted repetitions multiplied out,
//   or whose
//                     bracket expressions do for some millions
// Long literal patterns and lists of thousands of alternatives are fine.
HOSTUTIL_EXPORT bool MatchString(const std::string& text, const std::string& pattern, std::string* matched);

}  // namespace Utils
