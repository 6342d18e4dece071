// Internal. A look at a property list's bytes before they reach the parser, whose recursion and whose
// expansion of shared references a hostile file could otherwise drive until the process runs out of stack or
// memory.
//
//   if (PlistLimits::XmlIsSafe(bytes, length)) plist_from_xml(bytes, length, &root);
//
// Both functions read the bytes the way libplist does, allocate nothing, do not recurse, and give true only
// for bytes whose tree keeps within the limits below. They give false for much of what libplist would refuse
// anyway, and leave the rest of that to it: true does not promise that the bytes parse.

#pragma once

#include <cstddef>
#include <cstdint>

namespace PlistLimits {

// The deepest nesting of arrays, sets and dictionaries that is let through, empty ones included; the root is
// level 1. libplist recurses once per level when it parses a binary list and when it prints, copies or frees
// a tree; 512 levels of that fit into a stack of 512 KiB.
inline constexpr std::size_t kMaxDepth = 512;

// How much a binary list may stand for: 8 MiB, and 512 bytes for each byte of the file. A node counts as
// kNodeSize bytes, about what libplist allocates for it, a text of up to 14 units or characters included, and
// as one byte for each level, which printing puts in front of it as a tab. Longer texts and data count as
// they are, three bytes for a UTF-16 unit. All of it counts as often as it is referenced. So some hundred
// bytes stand for 65,000 nodes at most, and each further byte for four more.
//
// A list without sharing always passes, since a node takes three bytes of the file at least: a reference, an
// offset and itself. The rest is room for sharing. However long they are, these pass: a list of one-byte
// references to one text of up to 380 bytes, of two-byte references to one of up to 890, and so on; a
// container used three times that fills the file with one-byte references, and one used far more often where
// the file also holds what it refers to.
inline constexpr std::uint64_t kFreeSize = 8ULL << 20;
inline constexpr std::uint64_t kSizePerByte = 512;
inline constexpr std::uint64_t kNodeSize = 128;

// Takes a few nanoseconds for each node that the list stands for, which the limit bounds as well.
// Within `length` bytes nothing is trusted: offsets, counts and sizes may lie, references may form a loop.
bool BinaryIsSafe(const char* bytes, std::size_t length, std::size_t max_depth = kMaxDepth);

}  // namespace PlistLimits
