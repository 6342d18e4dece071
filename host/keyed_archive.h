// Decodes the keyed archive in the `file` column of a manifest database.

#pragma once

#include <cstddef>

#include "manifest.h"

// Reads size and modification time from the archive into `entry`. False when the archive does not parse,
// exceeds 1 MiB or has no usable size.
bool DecodeKeyedArchive(const char* bytes, std::size_t length, Entry& entry);
