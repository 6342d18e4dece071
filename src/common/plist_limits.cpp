#include "common/plist_limits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace {

// Follows the references of a binary list in the parser's own way, container by container, and sums up what
// the tree will take. Most references lead to small leaves, and those are told by their first byte.
class BinaryWalk {
 public:
  BinaryWalk(const char* bytes, std::size_t length, std::size_t max_depth)
      : bytes_(bytes),
        length_(length),
        max_depth_(std::min(max_depth, PlistLimits::kMaxDepth)),
        allowance_(PlistLimits::kFreeSize + PlistLimits::kSizePerByte * length) {}

  bool KeepsWithinLimits() {
    if (!ReadTrailer()) return false;
    Frame innermost{};
    const char* object = ObjectAt(root_);
    while (Visit(object, innermost)) {
      while ((object = SkipSmallLeaves(innermost)) == nullptr) {
        if (depth_ == 0) return true;
        innermost = outer_[--depth_];
      }
    }
    return false;
  }

 private:
  enum Type : unsigned {
    kNullOrBoolean = 0x00,
    kInteger = 0x10,
    kReal = 0x20,
    kDate = 0x30,
    kData = 0x40,
    kAsciiText = 0x50,
    kUtf16Text = 0x60,
    kUid = 0x80,
    kArray = 0xA0,
    kSet = 0xC0,
    kDictionary = 0xD0,
    kTypeMask = 0xF0,
    kCountMask = 0x0F,
    kCountFollows = 0x0F,
  };

  // The references of an open container that are still to be followed. Around the root there are none.
  struct Frame {
    const char* next;
    const char* end;
  };

  static constexpr std::string_view kHeader = "bplist00";
  static constexpr std::size_t kTrailerSize = 32;
  static constexpr char kNoObject = 0x70;  // a marker that the parser refuses

  static std::uint64_t LoadEightBytes(const char* at) {
    std::uint64_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
  }

  static std::uint64_t ReadEightBytes(const char* at) {
    const std::uint64_t value = LoadEightBytes(at);
    return std::endian::native == std::endian::little ? __builtin_bswap64(value) : value;
  }

  // Big-endian numbers of one to eight bytes. The eight bytes that end with a number can be read wherever it
  // stands, since the header, which holds no container and no count, stands in front.
  struct Numbers {
    std::uint64_t Read(const char* at) const { return ReadEightBytes(at + size - 8) & mask; }

    std::size_t size;
    std::uint64_t mask = ~0ULL >> (64 - 8 * size);
  };

  static bool IsNumberSize(std::size_t size) { return size >= 1 && size <= 8; }

  bool ReadTrailer() {
    if (length_ < kHeader.size() + kTrailerSize || !std::string_view(bytes_, length_).starts_with(kHeader))
      return false;
    const std::uint64_t trailer = length_ - kTrailerSize;
    const std::size_t offset_size = static_cast<unsigned char>(bytes_[trailer + 6]);
    const std::size_t reference_size = static_cast<unsigned char>(bytes_[trailer + 7]);
    if (!IsNumberSize(offset_size) || !IsNumberSize(reference_size)) return false;
    offsets_ = {offset_size};
    references_ = {reference_size};
    object_count_ = ReadEightBytes(bytes_ + trailer + 8);
    root_ = ReadEightBytes(bytes_ + trailer + 16);
    table_offset_ = ReadEightBytes(bytes_ + trailer + 24);
    return table_offset_ >= kHeader.size() && table_offset_ < trailer &&
           object_count_ <= (trailer - table_offset_) / offset_size;
  }

  // Where the object stands, or kNoObject where the parser gives up.
  const char* ObjectAt(std::uint64_t index) const {
    if (index >= object_count_) return &kNoObject;
    const std::uint64_t offset = offsets_.Read(bytes_ + table_offset_ + index * offsets_.size);
    return offset < table_offset_ ? bytes_ + offset : &kNoObject;
  }

  // The bytes from `body` to the offset table, which stands behind all objects.
  std::uint64_t RoomFrom(const char* body) const {
    const auto offset = static_cast<std::uint64_t>(body - bytes_);
    return offset < table_offset_ ? table_offset_ - offset : 0;
  }

  // By marker: a leaf that takes no more than kNodeSize, which its container has paid already, and needs no
  // closer look. Most objects are such leaves.
  static constexpr auto kIsSmallLeaf = [] {
    std::array<bool, 256> small{};
    for (unsigned marker = 0; marker < small.size(); ++marker) {
      small[marker] = (marker < kAsciiText + kCountFollows && (marker & kCountMask) != kCountFollows) ||
                      (marker & kTypeMask) == kUid;
    }
    return small;
  }();

  // The next object that is not a small leaf, or null at the end.
  const char* SkipSmallLeaves(Frame& references) const {
    while (references.next != references.end) {
      const char* const object = ObjectAt(references_.Read(references.next));
      references.next += references_.size;
      if (!kIsSmallLeaf[static_cast<unsigned char>(*object)]) return object;
    }
    return nullptr;
  }

  // Keys are visited as values are: one that is no text ends the parsing, but not before it has been parsed.
  // Whatever the parser refuses may end the walk with false at once: no other part of the file can change
  // that.
  bool Visit(const char* object, Frame& innermost) {
    const auto marker = static_cast<unsigned char>(*object);
    if (kIsSmallLeaf[marker]) return true;
    const char* body = object + 1;
    std::uint64_t count = marker & kCountMask;
    if (count == kCountFollows && !ReadCount(body, count)) return false;
    // Data and an ASCII text: the parser sees itself whether there is room for them.
    if (marker == (kData | kCountFollows) || marker == (kAsciiText | kCountFollows)) return Spend(count);
    if (count > RoomFrom(body)) return false;
    switch (marker & kTypeMask) {
      case kUtf16Text:  // three bytes of UTF-8 at most for each unit
        return 2 * count <= RoomFrom(body) && !HoldsNul(body, count) && Spend(3 * count);
      case kArray:
      case kSet:
        return Enter(body, count, innermost);
      case kDictionary:
        return Enter(body, 2 * count, innermost);
      default:
        return false;
    }
  }

  // Whether one of `count` UTF-16 units is zero, told of four at a time. ASCII texts need no such look: the
  // parser ends them at a NUL.
  static bool HoldsNul(const char* units, std::uint64_t count) {
    const auto zeros = [](std::uint64_t four) {
      return (four - 0x0001000100010001) & ~four & 0x8000800080008000;
    };
    std::uint64_t found = 0;
    for (; count >= 4; count -= 4, units += 8) found |= zeros(LoadEightBytes(units));
    // What follows the last units, three at most, counts as ones.
    return (found | zeros(ReadEightBytes(units) | ~0ULL >> 16 * count)) != 0;
  }

  // Replaces a count that did not fit into the marker by the number of one to eight bytes behind it.
  static bool ReadCount(const char*& body, std::uint64_t& count) {
    const unsigned log = static_cast<unsigned char>(*body) - kInteger;
    if (log > 3) return false;
    const Numbers number{std::size_t{1} << log};
    count = number.Read(body + 1);
    body += 1 + number.size;
    return true;
  }

  // Opens a container of `count` references and pays for all its nodes. A loop of references ends here too,
  // by its depth.
  bool Enter(const char* references, std::uint64_t count, Frame& innermost) {
    const std::uint64_t size = count * references_.size;
    if (depth_ == max_depth_ || size > RoomFrom(references)) return false;
    outer_[depth_++] = innermost;
    innermost = {references, references + size};
    return Spend(count * (PlistLimits::kNodeSize + depth_));
  }

  bool Spend(std::uint64_t cost) {
    if (cost > allowance_) return false;
    allowance_ -= cost;
    return true;
  }

  const char* bytes_;
  std::uint64_t length_;
  std::size_t max_depth_;
  std::uint64_t allowance_;
  Numbers offsets_{1};
  Numbers references_{1};
  std::uint64_t object_count_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t table_offset_ = 0;
  std::size_t depth_ = 0;
  // What stands around the innermost container, depth_ in all. Left uninitialised, since most stay unused.
  std::array<Frame, PlistLimits::kMaxDepth> outer_;
};

}  // namespace

bool PlistLimits::BinaryIsSafe(const char* bytes, std::size_t length, std::size_t max_depth) {
  return BinaryWalk(bytes, length, max_depth).KeepsWithinLimits();
}
