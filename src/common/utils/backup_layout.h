// The identifier of a backed-up file, and its place in a backup on disk.
//
//   std::string id = Utils::CalcFileID("HomeDomain", "Library/notes.db");
//   Utils::ConcatBackupFilePath("/backups/1/", id.c_str(), true, false)   // /backups/1/4c/4c936ec5...
//
// Both let std::bad_alloc and std::length_error out. A null text counts as the empty one.

#pragma once

#include <string>

#include "common/export.h"

namespace Utils {

// The identifier under which a backup stores a file: the host's digest of `first`, "-" and `second`. In a
// device backup `first` is the file's domain and `second` its path there. Nothing is escaped, so ("a-", "b")
// and ("a", "-b") share an identifier.
HOSTUTIL_EXPORT std::string CalcFileID(const char* first, const char* second);

// Where a backup stores the file `file_id`. Flat: `root` and the identifier. Two-level: `root`, the
// identifier's first two characters, "/", the identifier. No separator is put behind `root`, so one that
// names a folder ends with "/". With `create`, the two-level folder is asked of the host's file service,
// whose outcome is not looked at; the flat layout never creates anything. The identifier is used as it is:
// check one from outside before you trust the path.
HOSTUTIL_EXPORT std::string ConcatBackupFilePath(const char* root, const char* file_id, bool two_level,
                                                 bool create);

}  // namespace Utils
