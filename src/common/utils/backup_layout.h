// The identifier of a file in a backup, and its path there.
//
//   std::string id = Utils::CalcFileID("HomeDomain", "Library/notes.db");
//   Utils::ConcatBackupFilePath("/backups/1/", id.c_str(), true, false)   // /backups/1/4c/4c936ec5...
//
// A null text counts as the empty one. Both throw std::bad_alloc and std::length_error.

#pragma once

#include <string>

#include "common/export.h"

namespace Utils {

// The identifier of a file: the string service's digest of `first`, "-" and `second` joined. In a device
// backup `first` is the file's domain and `second` its path in the domain. Nothing is escaped: ("a-", "b")
// and ("a", "-b") have the same identifier.
HOSTUTIL_EXPORT std::string CalcFileID(const char* first, const char* second);

// The path of the file `file_id` in a backup: `root` and the identifier in the flat layout; `root`, the
// identifier's first two characters, "/" and the identifier in the two-level layout. No separator is added
// after `root`, so the name of a folder must end with "/". With `create`, the file service is asked to make
// the folder of the two-level layout; its failure is ignored. The flat layout creates nothing. The identifier
// is not checked: do so before you open a path made of one from outside.
HOSTUTIL_EXPORT std::string ConcatBackupFilePath(const char* root, const char* file_id, bool two_level,
                                                 bool create);

}  // namespace Utils
