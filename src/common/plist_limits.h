// Internal. Checks a binary property list before libplist parses it: a hostile one could exhaust the stack,
// since libplist recurses, or memory, since it copies what is referenced more than once.
//
//   if (PlistLimits::BinaryIsSafe(bytes, length)) plist_from_bin(bytes, length, &root);
//
// The checks allocate nothing and do not recurse. They take a few nanoseconds for each node of the tree,
// whose number the limits bound.

#pragma once

#include <cstddef>
#include <cstdint>

#include "common/binary_plist.h"

namespace PlistLimits {

// The deepest nesting of arrays, sets and dictionaries, empty ones included; the root is level 1. libplist
// recurses once per level when it parses a binary list and when it prints, copies or frees a tree; 512 levels
// of that fit into a stack of 512 KiB.
inline constexpr std::size_t kMaxDepth = 512;

// The size of the tree: at most 8 MiB and 512 bytes for each byte of the list. Each node counts as kNodeSize
// bytes, about what libplist allocates for it with a string of up to 14 units, and as one byte per level, the
// tab that printing indents it by. Longer strings and data count as they are, a UTF-16 unit as three bytes. A
// shared node counts once per reference. So a few hundred bytes give at most 65,000 nodes, and each further
// byte gives four more.
//
// Lists without sharing always pass, since a node takes at least three bytes of them: a reference, an offset
// and itself. The rest is for sharing. At any length these pass: one-byte references to one string of up to
// 380 bytes, two-byte references to one of up to 890, and so on; three references to a container that fills
// the list with one-byte references, and far more of them where the list also contains what it refers to.
inline constexpr std::uint64_t kFreeSize = 8ULL << 20;
inline constexpr std::uint64_t kSizePerByte = 512;
inline constexpr std::uint64_t kNodeSize = 128;

// True only for a list within the limits in which no UTF-16 string contains a NUL (see PlistUtil::ReadPlist).
// False for some lists that libplist rejects; true does not promise that the list parses.
bool BinaryIsSafe(const char* bytes, std::size_t length, std::size_t max_depth = kMaxDepth);

// Whether the list is safe and libplist would parse it. `length` is that of the bytes that the reader has
// opened.
bool BinaryIsValid(const BinaryPlist::Reader& reader, std::size_t length);

}  // namespace PlistLimits
