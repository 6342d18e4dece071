// Joining, replacing, splitting and searching, byte by byte and case-sensitively.
//
//   std::string text = "a.b.c";
//   Utils::ReplaceStr(text, ".", "/")                // 2, and text is "a/b/c"
//   std::vector<std::string> fields;
//   Utils::SplitWithFlag("a,,b", ',', fields);       // "a", "", "b"
//   char* joined = Utils::ConcatStr("dir", "/x");    // "dir/x"
//   std::free(joined);
//
// A char* result is a new block of exactly the text's length and its NUL, which the caller frees; null when
// there is no memory for it. Where nothing else is said, a null text counts as the empty one.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"

namespace Utils {

// `first` directly followed by `second`. Null also when the two exceed 2,147,483,646 bytes together.
HOSTUTIL_EXPORT char* ConcatStr(const char* first, const char* second);

// A copy of `text` with `write` in the place of every `find`; mind the order of the two. Nothing is replaced
// when they are equal or `find` is NUL. Null: null.
HOSTUTIL_EXPORT char* ReplaceChar(const char* text, char write, char find);

// Replaces every `search` in `text`, from left to right and without overlap, and returns how many there were.
// What was put in is not searched again. An empty `search` finds nothing. `search` and `replacement` may
// point into `text`. In place and in linear time; the string grows at most once, and if that throws
// std::bad_alloc or std::length_error it is unchanged.
HOSTUTIL_EXPORT std::int32_t ReplaceStr(std::string& text, const char* search, const char* replacement);

// The pieces of `text` between runs of characters from `delimiters`, with `joiner` (null: nothing) between
// each two. Null when no piece remains, and for a null text.
HOSTUTIL_EXPORT char* DeleteDelims(const char* text, const char* delimiters, const char* joiner);

// Appends the fields of `text` to `fields`, which is not cleared. Every separator ends a field, an empty one
// too; no field follows a separator at the very end, so "a," is one field and "" none. When memory runs out,
// std::bad_alloc leaves and the fields appended so far stay.
HOSTUTIL_EXPORT void SplitWithFlag(const char* text, char separator, std::vector<std::string>& fields);

// The first place in `range` where the bytes of `pattern` stand, as a pointer into `range`; null when there
// is none, the pattern is empty or it is longer than the range (neither buffer is then read, so both may be
// null). A plain scan that allocates nothing: at worst it costs range length times pattern length.
HOSTUTIL_EXPORT const void* MemMem(const void* range, unsigned long range_length, const void* pattern,
                                   unsigned long pattern_length);

}  // namespace Utils
