// The three CoreFoundation calls that the library makes, over GNUstep's NSUUID. Both "create" calls return an
// object that the caller releases.

#pragma once

#import <Foundation/Foundation.h>
#include <uuid/uuid.h>

using CFUUIDRef = const struct __CFUUID*;
using CFStringRef = const struct __CFString*;

inline CFUUIDRef CFUUIDCreate(const void*) {
  uuid_t bytes;
  uuid_generate(bytes);  // version 4, which [NSUUID init] does not set
  return reinterpret_cast<CFUUIDRef>([[NSUUID alloc] initWithUUIDBytes:bytes]);
}

inline CFStringRef CFUUIDCreateString(const void*, CFUUIDRef uuid) {
  NSUUID* const object = reinterpret_cast<NSUUID*>(const_cast<__CFUUID*>(uuid));
  return reinterpret_cast<CFStringRef>([[NSString alloc] initWithString:[object UUIDString]]);
}

inline void CFRelease(CFUUIDRef uuid) {
  [reinterpret_cast<NSUUID*>(const_cast<__CFUUID*>(uuid)) release];
}
