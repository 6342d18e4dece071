// Internal. Reads a binary property list in place. Allocates nothing and trusts nothing: offsets, counts and
// sizes may lie. Accepts what libplist accepts, except a UTF-16 string with a NUL.
//
//   BinaryPlist::Reader reader;
//   BinaryPlist::Object root, size;
//   if (reader.Open(bytes, length) && reader.Read(reader.Find(reader.Root()), root) &&
//       reader.FindItem(root, "Size", size)) ...
//
// A list is a header, the objects, a table of their offsets and a trailer. An object is a marker byte, whose
// upper half is the type and whose lower half a count, and a body. Containers refer to objects by index.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

#include "common/libplist.h"

namespace BinaryPlist {

enum Type : unsigned {
  kNullOrBoolean = 0x00,
  kInteger = 0x10,
  kReal = 0x20,
  kDate = 0x30,
  kData = 0x40,
  kAsciiString = 0x50,
  kUtf16String = 0x60,
  kUid = 0x80,
  kArray = 0xA0,
  kSet = 0xC0,
  kDictionary = 0xD0,
};
inline constexpr unsigned kTypeMask = 0xF0;
inline constexpr unsigned kCountMask = 0x0F;
inline constexpr unsigned kCountFollows = 0x0F;  // an integer after the marker holds the count

struct Object {
  unsigned type = 0;
  // Bytes of data, characters or UTF-16 units of a string, elements of an array or set, pairs of a
  // dictionary. Otherwise the lower half of the marker.
  std::uint64_t count = 0;
  const char* body = nullptr;  // of a container: its references, of a dictionary the keys' before the values'
};

class Reader {
 public:
  // False when libplist rejects the header or the trailer. The bytes must outlive the reader.
  bool Open(const char* bytes, std::size_t length);

  std::uint64_t Root() const { return root_; }
  std::size_t ReferenceSize() const { return references_.size; }
  std::uint64_t Reference(const char* at) const { return references_.Read(at); }

  // The marker of object `index`; for an index or offset out of range, a marker that Read rejects.
  const char* Find(std::uint64_t index) const {
    if (index >= object_count_) return &kNoObject;
    const std::uint64_t offset = offsets_.Read(table_ + index * offsets_.size);
    return offset - kHeader.size() < objects_size_ ? bytes_ + offset : &kNoObject;
  }

  // False when libplist rejects the object itself, whatever it contains, or cannot hold it: a UTF-16 string
  // with a NUL. `marker` comes from Find.
  bool Read(const char* marker, Object& object) const;

  // The first value under an ASCII key, and the element of an array or set. False when there is none, also
  // when the first argument is no such container.
  bool FindItem(const Object& dictionary, std::string_view key, Object& value) const;
  bool FindElement(const Object& array, std::uint64_t index, Object& element) const;

  // The low 64 bits of an integer or a UID.
  static std::uint64_t ValueOf(const Object& number);

  // Reads a count that follows a marker, and where the body is after it, which may be past all objects.
  bool ReadCount(const char* at, Object& object) const;

 private:
  static constexpr std::string_view kHeader = "bplist00";
  static constexpr char kNoObject = 0x70;

  // Big-endian numbers of one to eight bytes. The eight bytes that end with a number can always be read,
  // since the header comes before all numbers.
  struct Numbers {
    std::uint64_t Read(const char* at) const {
      std::uint64_t value;
      std::memcpy(&value, at + size - sizeof value, sizeof value);
      if (std::endian::native == std::endian::little) value = __builtin_bswap64(value);
      return value & mask;
    }

    std::size_t size;
    std::uint64_t mask = ~0ULL >> (64 - 8 * size);
  };

  const char* bytes_ = nullptr;
  const char* table_ = nullptr;
  std::uint64_t objects_size_ = 0;  // from the header to the table
  std::uint64_t object_count_ = 0;
  std::uint64_t root_ = 0;
  Numbers offsets_{1};
  Numbers references_{1};
};

inline std::uint64_t LoadEightBytes(const char* at) {
  std::uint64_t value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// Whether one of `count` UTF-16 units is zero; looks at four of them at a time. REQUIRES: eight more bytes
// can be read, which the trailer makes sure of.
inline bool HasNul(const char* units, std::uint64_t count) {
  const auto zeros = [](std::uint64_t four) {
    return (four - 0x0001'0001'0001'0001) & ~four & 0x8000'8000'8000'8000;
  };
  std::uint64_t found = 0;
  for (; count >= 4; count -= 4, units += 8) found |= zeros(LoadEightBytes(units));
  std::uint64_t rest = LoadEightBytes(units);
  if (std::endian::native == std::endian::little) rest = __builtin_bswap64(rest);
  return (found | zeros(rest | ~0ULL >> 16 * count)) != 0;  // what follows the last units counts as ones
}

inline bool Reader::ReadCount(const char* at, Object& object) const {
  const unsigned log = static_cast<unsigned char>(*at) - unsigned{kInteger};
  if (log > 3) return false;
  const Numbers number{std::size_t{1} << log};
  object.count = number.Read(at + 1);
  object.body = at + 1 + number.size;
  return true;
}

inline bool Reader::Read(const char* marker, Object& object) const {
  const auto byte = static_cast<unsigned char>(*marker);
  object = {byte & kTypeMask, byte & kCountMask, marker + 1};
  if (object.type >= kData && object.type != kUid && object.count == kCountFollows &&
      !ReadCount(marker + 1, object))
    return false;
  if (object.body > table_) return false;
  const std::uint64_t count = object.count;
  const auto room = static_cast<std::uint64_t>(table_ - object.body);
  switch (object.type) {
    case kNullOrBoolean:
      return count == 8 || count == 9 || (count == 0 && Libplist::kReadsNull);
    case kInteger:
      return count <= 4 && 1U << count <= room;
    case kReal:
      return (count == 2 || count == 3) && 1U << count <= room;
    case kDate:
      return count == 3 && 8 <= room;
    case kUid:
      return count + 1 <= room && ValueOf(object) <= std::numeric_limits<std::uint32_t>::max();
    case kData:
    case kAsciiString:
      return count <= room;
    case kUtf16String:
      return count != 0 && count <= room / 2 && !HasNul(object.body, count);
    case kArray:
    case kSet:
      return count <= room && count * references_.size <= room;
    case kDictionary:
      return count <= room && 2 * count * references_.size <= room;
    default:
      return false;
  }
}

}  // namespace BinaryPlist
