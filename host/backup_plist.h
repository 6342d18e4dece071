// Property lists stored in a backup.

#pragma once

#include <cstdint>
#include <string>

#include "owners.h"

// Reads the regular file at `path`, of `size` bytes. Null when it cannot be read, does not parse or exceeds
// 64 MiB: a parsed list takes several times its size in memory.
Plist ReadBackupPlist(const std::string& path, std::uint64_t size);

// After ReadBackupPlist returned null: whether the file can be read, and so is damaged.
bool IsReadable(const std::string& path, std::uint64_t size);
