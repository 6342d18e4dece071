#include "common/binary_plist.h"

#include <algorithm>

namespace {

using namespace BinaryPlist;

// Whether a string is this ASCII text. libplist ends an ASCII string at a NUL.
bool Equals(const Object& string, std::string_view text) {
  if (string.type == kAsciiString) {
    const std::string_view whole(string.body, string.count);
    return whole.starts_with(text) && (whole.size() == text.size() || whole[text.size()] == '\0');
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
  objects_size_ = table_offset - kHeader.size();
  return object_count_ <= (trailer_offset - table_offset) / offset_size;
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
