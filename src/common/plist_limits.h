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
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
inline constexpr std::size_t kMaxDepth = 6;  // so little that a fuzzer gets past a look that counts wrongly
#else
inline constexpr std::size_t kMaxDepth = 512;
#endif

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
//
// XML has no references, its entities stand for single characters, and a node takes six bytes at least, so
// that its depth is all that has to be looked at.
inline constexpr std::uint64_t kFreeSize = 8ULL << 20;
inline constexpr std::uint64_t kSizePerByte = 512;
inline constexpr std::uint64_t kNodeSize = 128;

// A text that holds a NUL is refused, too: libplist keeps one with a length that its bytes no longer bear
// out, copies it short, prints it past its end, and ends the process when it is asked for it.

// Takes a few nanoseconds for each node that the list stands for, which the limit bounds as well.
// Within `length` bytes nothing is trusted: offsets, counts and sizes may lie, references may form a loop.
bool BinaryIsSafe(const char* bytes, std::size_t length);

// Takes time in proportion to the length, most of it only where there are more than 512 containers. What
// follows the root element is looked at for a NUL alone, and by libplist not at all.
bool XmlIsSafe(const char* bytes, std::size_t length);

}  // namespace PlistLimits
