// Internal. What the library asks of Foundation, CoreFoundation and the object runtime, an operation each.
//
// foundation_apple.mm passes every one on to the frameworks; foundation_portable.cpp is a small layer of our
// own with the same ownership. "Autoreleased" objects are the calling thread's innermost pool's and are never
// released by hand.

#pragma once

#include <cstddef>

namespace Foundation {

class String;  // opaque: a string object
class Uuid;    // opaque: an identifier object

inline constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

// An autoreleased string object; null when `text` is no valid UTF-8. Foundation drops a byte order mark at
// the start; the portable layer keeps it.
String* StringWithUtf8(const char* text);

// Where the last `wanted` begins in `text`, in the platform's own units, or kNotFound. Foundation
// does not find a `wanted` that a combining mark follows; the portable layer does.
std::size_t LastRangeOf(String* text, String* wanted);

// An autoreleased string object of the first `length` units of `text`.
String* LeadingSubstring(String* text, std::size_t length);

// The object's characters, valid as long as the object is.
const char* Utf8(String* text);

// A new identifier object, to be given to Release.
Uuid* CreateUuid();

// A new string object with its canonical text, to be given to Autorelease.
String* CreateUuidString(Uuid* uuid);

void Release(Uuid* uuid);

// Hands `text` to the calling thread's innermost pool and returns it.
String* Autorelease(String* text);

}  // namespace Foundation
