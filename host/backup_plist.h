// Property lists stored in a backup.

#pragma once

#include <cstdint>
#include <string>

#include "owners.h"

// Reads the regular file at `path`, of `size` bytes. Null when it does not parse or exceeds 64 MiB: a parsed
// list takes several times its size in memory. Throws Failure when it cannot be opened.
Plist ReadBackupPlist(const std::string& path, std::uint64_t size);
