// New unique identifiers.
//
//   AutoreleasePool pool;
//   std::string id = Utils::GenerateLowerUuid();   // "0b5a3f6e-6f0c-4b52-9c44-2f4d1a1f0b7d"

#pragma once

#include <string>

#include "common/export.h"

namespace Utils {

// A new UUID of 36 characters in lower case, as above. Creates an object in the calling thread's autorelease
// pool, which the host provides; without a pool it is released when the thread ends, on macOS never. Throws
// std::bad_alloc.
HOSTUTIL_EXPORT std::string GenerateLowerUuid();

}  // namespace Utils
