// Internal. Makes an XML property list safe for libplist, whose recursion a hostile file could drive until
// the stack overflows, and whose decoding of entities takes quadratic time.
//
//   if (!XmlPlist::IsSafe(bytes, length, PlistLimits::kMaxDepth)) return nullptr;
//   if (XmlPlist::HasSlowTexts(bytes, length)) copy = XmlPlist::DecodeSlowTexts(bytes, length);
//
// Nothing in the bytes is trusted, and no function recurses. All take time linear in the length. Tags,
// comments, CDATA sections and quotes are scanned the way libplist scans them, which is not XML's way in
// every corner.

#pragma once

#include <cstddef>

#include "common/owners.h"

namespace XmlPlist {

// False when arrays and dictionaries, empty ones included, nest deeper than `max_depth`, or when a string or
// key contains a NUL (see PlistUtil::ReadPlist). False also for some lists that libplist rejects; true does
// not promise that the bytes parse.
//
// Depth and NULs are all that needs a check: XML has no references, its entities expand to single characters,
// and a node takes at least six bytes, so the tree is at most some twenty times as large as the bytes.
bool IsSafe(const char* bytes, std::size_t length, std::size_t max_depth);

// Whether libplist would take much longer for the entities than for the rest: for each one it moves all that
// follows in the same text.
bool HasSlowTexts(const char* bytes, std::size_t length);

struct Copy {
  Owners::Block bytes;  // null: no memory, or longer than libplist's 32-bit lengths allow
  std::size_t length = 0;
};

// A copy that gives the same tree in linear time: in long strings and keys, the entities are decoded, with a
// CDATA section around what must not be taken for markup.
Copy DecodeSlowTexts(const char* bytes, std::size_t length);

}  // namespace XmlPlist
