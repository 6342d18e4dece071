// The parts of a path, as text: nothing here touches the file system.
//
//   Utils::GetParentDir("/a/b/c.txt")            // "/a/b/"
//   Utils::GetFileName("/a/b/c.txt")             // "c.txt"
//   Utils::GetFileNameWithoutExt("/a/b/c.txt")   // "/a/b/c"
//   Utils::GetFilePostfix("/a/b/c.txt")          // "txt"
//
// The functions differ in which characters separate; each states its own. They throw std::bad_alloc.

#pragma once

#include <string>

#include "common/export.h"

namespace Utils {

// `path` up to its last "/", that included; empty when it has none, and for null. A backslash is no
// separator. Creates objects in the calling thread's autorelease pool, which the host provides. Invalid UTF-8
// is cut at its last "/" like any other text. On macOS a "/" before a combining mark does not count, and a
// byte order mark at the start is dropped.
HOSTUTIL_EXPORT std::string GetParentDir(const char* path);

// The part of `path` after its last "/" or backslash; all of it when it has neither. Null: empty.
HOSTUTIL_EXPORT std::string GetFileName(const char* path);

// `path` before its last "."; all of it when it has none. Keeps the folders and knows no separators, so a "."
// in a folder's name counts: "/a.d/b" gives "/a". Null: empty.
HOSTUTIL_EXPORT std::string GetFileNameWithoutExt(const char* path);

// The part of the file name (see GetFileName) after its last "."; empty when it has none. Null: empty.
HOSTUTIL_EXPORT std::string GetFilePostfix(const char* path);

// `directory` followed by `name`, as a new block that the caller frees. A "/" is put between them only when
// `directory` holds a "/" that is not its last character: "dir" and "f" give "dirf". `name` is not examined.
// A null text counts as the empty one. Null when out of memory or above 2,147,483,646 bytes.
HOSTUTIL_EXPORT char* ConcatFilePath(const char* directory, const char* name);

// Always empty; kept for hosts that link against it. Reads neither argument.
HOSTUTIL_EXPORT std::string GetFileCreateTime(const char*, const char*);

}  // namespace Utils
