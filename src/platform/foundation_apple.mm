// The frameworks themselves: one message or call for each operation. Compiled without automatic reference
// counting.

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include "platform/autorelease_pool.h"
#include "platform/foundation.h"

namespace Foundation {
namespace {

// String and Uuid are only names for the frameworks' own objects.
NSString* Object(String* text) {
  return reinterpret_cast<NSString*>(text);
}

CFUUIDRef Object(Uuid* uuid) {
  return reinterpret_cast<CFUUIDRef>(uuid);
}

String* Opaque(NSString* text) {
  return reinterpret_cast<String*>(text);
}

String* Opaque(CFStringRef text) {
  return reinterpret_cast<String*>(const_cast<__CFString*>(text));
}

Uuid* Opaque(CFUUIDRef uuid) {
  return reinterpret_cast<Uuid*>(const_cast<__CFUUID*>(uuid));
}

}  // namespace

String* StringWithUtf8(const char* text) {
  return Opaque([NSString stringWithUTF8String:text]);
}

std::size_t LastRangeOf(String* text, String* wanted) {
  const NSRange range = [Object(text) rangeOfString:Object(wanted) options:NSBackwardsSearch];
  return range.location == NSNotFound ? kNotFound : range.location;
}

String* LeadingSubstring(String* text, std::size_t length) {
  return Opaque([Object(text) substringWithRange:NSMakeRange(0, length)]);
}

const char* Utf8(String* text) {
  return [Object(text) UTF8String];
}

Uuid* CreateUuid() {
  return Opaque(CFUUIDCreate(nullptr));
}

String* CreateUuidString(Uuid* uuid) {
  return Opaque(CFUUIDCreateString(nullptr, Object(uuid)));
}

void Release(Uuid* uuid) {
  CFRelease(Object(uuid));
}

String* Autorelease(String* text) {
  return Opaque([Object(text) autorelease]);
}

}  // namespace Foundation

AutoreleasePool::AutoreleasePool()
    : pool_(reinterpret_cast<std::uintptr_t>([[NSAutoreleasePool alloc] init])) {
}

AutoreleasePool::~AutoreleasePool() {
  [reinterpret_cast<NSAutoreleasePool*>(pool_) drain];
}
