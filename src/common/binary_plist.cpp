#include "common/binary_plist.h"

#include <algorithm>
#include <limits>

#include "common/libplist.h"

namespace {

using namespace BinaryPlist;

std::uint64_t Load(const char* at) {
  std::uint64_t value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// Whether one of `count` UTF-16 units is zero; looks at four of them at a time.
bool HasNul(const char* units, std::uint64_t count) {
  const auto zeros = [](std::uint64_t four) {
    return (four - 0x0001'0001'0001'0001) & ~four & 0x8000'8000'8000'8000;
  };
  std::uint64_t found = 0;
  for (; count >= 4; count -= 4, units += 8) found |= zeros(Load(units));
  std::uint64_t rest = ~0ULL;
  std::memcpy(&rest, units, 2 * count);
  return (found | zeros(rest)) != 0;
}

// Whether a string is this ASCII text. libplist ends an ASCII string at a NUL.
bool Equals(const Object& string, std::string_view text) {
  if (string.type == kAsciiString) {
    const std::string_view whole(string.body, string.count);
    return whole.substr(0, whole.find('\0')) == text;
  }
  if (string.type != kUtf16String || string.count != text.size()) return false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (string.body[2 * at] != 0 || string.body[2 * at + 1] != text[at]) return false;
  }
  return true;
}

}  // namespace

bool Reader::Open(const char* bytes, std::size_t length) {
  constexpr std::size_t kTrailerSize = 32;
  constexpr Numbers kEightBytes{8};
  if (length < kHeader.size() + kTrailerSize || !std::string_view(bytes, length).starts_with(kHeader))
    return false;
  const char* const trailer = bytes + length - kTrailerSize;
  const auto offset_size = static_cast<unsigned char>(trailer[6]);
  const auto reference_size = static_cast<unsigned char>(trailer[7]);
  const auto is_number_size = [](std::size_t size) { return size >= 1 && size <= 8; };
  if (!is_number_size(offset_size) || !is_number_size(reference_size)) return false;
  offsets_ = {offset_size};
  references_ = {reference_size};
  object_count_ = kEightBytes.Read(trailer + 8);
  root_ = kEightBytes.Read(trailer + 16);
  const std::uint64_t table_offset = kEightBytes.Read(trailer + 24);
  const std::uint64_t trailer_offset = length - kTrailerSize;
  if (table_offset < kHeader.size() || table_offset >= trailer_offset) return false;
  bytes_ = bytes;
  table_ = bytes + table_offset;
  return object_count_ <= (trailer_offset - table_offset) / offset_size;
}

bool Reader::ReadCount(Object& object) const {
  const unsigned log = static_cast<unsigned char>(*object.body) - unsigned{kInteger};
  if (log > 3) return false;
  const Numbers number{std::size_t{1} << log};
  if (1 + number.size > Room(object.body)) return false;
  object.count = number.Read(object.body + 1);
  object.body += 1 + number.size;
  return true;
}

bool Reader::Read(const char* marker, Object& object) const {
  const auto byte = static_cast<unsigned char>(*marker);
  object = {byte & kTypeMask, byte & kCountMask, marker + 1};
  if (object.type >= kData && object.type != kUid && object.count == kCountFollows && !ReadCount(object))
    return false;
  const std::uint64_t count = object.count;
  const std::uint64_t room = Room(object.body);
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

bool Reader::FindItem(const Object& dictionary, std::string_view key, Object& value) const {
  if (dictionary.type != kDictionary) return false;
  const std::uint64_t size = dictionary.count * references_.size;
  for (const char* at = dictionary.body; at != dictionary.body + size; at += references_.size) {
    if (Object found; Read(Find(Reference(at)), found) && Equals(found, key))
      return Read(Find(Reference(at + size)), value);
  }
  return false;
}

bool Reader::FindElement(const Object& array, std::uint64_t index, Object& element) const {
  return (array.type == kArray || array.type == kSet) && index < array.count &&
         Read(Find(Reference(array.body + index * references_.size)), element);
}

std::uint64_t Reader::ValueOf(const Object& number) {
  const std::size_t size = number.type == kUid ? number.count + 1 : std::size_t{1} << number.count;
  const std::size_t low = std::min<std::size_t>(size, 8);
  return Numbers{low}.Read(number.body + size - low);
}
