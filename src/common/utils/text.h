// Joining, replacing, splitting and searching texts as bytes; case counts.
//
//   std::string text = "a.b.c";
//   Utils::ReplaceStr(text, ".", "/")                // 2, and text is "a/b/c"
//   std::vector<std::string> fields;
//   Utils::SplitWithFlag("a,,b", ',', fields);       // "a", "", "b"
//   char* joined = Utils::ConcatStr("dir", "/x");    // "dir/x"
//   std::free(joined);
//
// A char* result is a new block of exactly the text's length and its NUL, which the caller frees; null when
// out of memory. Unless stated otherwise, a null text counts as the empty one.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"

namespace Utils {

// `first` directly followed by `second`. Null also when the two exceed 2,147,483,646 bytes together.
HOSTUTIL_EXPORT char* ConcatStr(const char* first, const char* second);

// A copy of `text` with every `find` replaced by `write`; mind the order of the two. A NUL to find replaces
// nothing. Null: null.
HOSTUTIL_EXPORT char* ReplaceChar(const char* text, char write, char find);

// Replaces every `search` in `text`, from left to right and without overlap, and returns how many it
// replaced. Replacements are not searched again. An empty `search` finds nothing. `search` and `replacement`
// may point into `text`. Works in place and in linear time (given a memmem that does, as in glibc and musl).
// The string grows at most once; if that throws std::bad_alloc or std::length_error, it is unchanged.
HOSTUTIL_EXPORT std::int32_t ReplaceStr(std::string& text, const char* search, const char* replacement);

// The pieces of `text` between runs of characters from `delimiters`, joined by `joiner` (null: by nothing).
// Null when no piece remains, and for a null text.
HOSTUTIL_EXPORT char* DeleteDelims(const char* text, const char* delimiters, const char* joiner);

// Appends the fields of `text` to `fields`, which keeps what it holds. Fields may be empty, but a separator
// at the very end starts no other one: "a,,b" has three fields, "a," one and "" none. A NUL separator splits
// nothing. Throws std::bad_alloc; the fields appended so far stay.
HOSTUTIL_EXPORT void SplitWithFlag(const char* text, char separator, std::vector<std::string>& fields);

// The first occurrence of the bytes `pattern` in `range`, as a pointer into `range`; null when there is none,
// and for a pattern that is empty or longer than the range (neither is read then, and both may be null). A
// range length above PTRDIFF_MAX is allowed when there is an occurrence; nothing after it is read. Allocates
// nothing and takes linear time, as ReplaceStr does.
HOSTUTIL_EXPORT const void* MemMem(const void* range, unsigned long range_length, const void* pattern,
                                   unsigned long pattern_length);

}  // namespace Utils
