// Taking paths apart and joining them. Text only: no function looks at the disk.
//
//   Utils::GetParentDir("/a/b/c.txt")            // "/a/b/"
//   Utils::GetFileName("/a/b/c.txt")             // "c.txt"
//   Utils::GetFileNameWithoutExt("/a/b/c.txt")   // "/a/b/c"
//   Utils::GetFilePostfix("/a/b/c.txt")          // "txt"
//
// Which characters separate differs from function to function and is said at each. Strings may throw
// std::bad_alloc.

#pragma once

#include <string>

#include "common/export.h"

namespace Utils {

// `path` up to and with its last "/"; empty when it has none, and for null. The backslash does not separate.
// On the way the text becomes objects in the calling thread's autorelease pool, which the host provides. Text
// that is no valid UTF-8 is cut at its last "/" all the same. On macOS a "/" before a combining mark does not
// count, and a byte order mark at the start is dropped.
HOSTUTIL_EXPORT std::string GetParentDir(const char* path);

// What follows the last "/" or backslash: all of `path` when it has neither. Null: empty.
HOSTUTIL_EXPORT std::string GetFileName(const char* path);

// `path` up to its last ".", all of it when it has none. Folders stay, and no separator is known here, so a
// "." in a folder's name counts: "/a.d/b" gives "/a". Null: empty.
HOSTUTIL_EXPORT std::string GetFileNameWithoutExt(const char* path);

// What follows the last "." of the file name (as GetFileName gives it), empty when it has none. Null: empty.
HOSTUTIL_EXPORT std::string GetFilePostfix(const char* path);

// `directory` and `name` in a new block that the caller frees. A "/" is put between them only when
// `directory` holds one that is not its last character: "dir" and "f" give "dirf". `name` is not looked at. A
// null text counts as the empty one. Null when there is no memory or the result would exceed 2,147,483,646
// bytes.
HOSTUTIL_EXPORT char* ConcatFilePath(const char* directory, const char* name);

// Always empty; a place kept for hosts that link against it. Reads neither argument.
HOSTUTIL_EXPORT std::string GetFileCreateTime(const char*, const char*);

}  // namespace Utils
