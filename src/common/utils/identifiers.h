// Fresh unique identifiers.
//
//   AutoreleasePool pool;
//   std::string id = Utils::GenerateLowerUuid();   // "0b5a3f6e-6f0c-4b52-9c44-2f4d1a1f0b7d"

#pragma once

#include <string>

#include "common/export.h"

namespace Utils {

// A new universally unique identifier: 36 characters, hexadecimal digits in lower case in groups of 8, 4, 4,
// 4 and 12. The platform's text object goes to the calling thread's autorelease pool, which the host
// provides; without one it lives as long as the thread, on macOS for good. Throws std::bad_alloc.
HOSTUTIL_EXPORT std::string GenerateLowerUuid();

}  // namespace Utils
