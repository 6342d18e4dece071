// The autorelease pool as a scope. Every thread that calls Utils::GetParentDir or Utils::GenerateLowerUuid
// needs one:
//
//   AutoreleasePool pool;
//   std::string folder = Utils::GetParentDir(path);
//
// Pools nest, and each belongs to the thread that made it. When a pool ends, the objects that were handed to
// it are released; results that the library returned are copies and stay. On macOS it is a pool of the object
// runtime and the host's own `@autoreleasepool` serves as well.

#pragma once

#include <cstdint>

#include "common/export.h"

// A pool of the calling thread, as long as this lives. Make and destroy it on that thread, the innermost
// first.
class HOSTUTIL_EXPORT AutoreleasePool {
 public:
  // Opens the pool inside the thread's innermost one.
  AutoreleasePool();

  // Releases what the pool was handed.
  ~AutoreleasePool();

  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;

 private:
  const std::uintptr_t pool_;  // the runtime's pool, or its place in our own stack of objects
};
