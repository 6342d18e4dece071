#include "common/plist_limits.h"

#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace {

using PlistLimits::kMaxDepth;

// Follows the references of a binary list in the parser's own way, container by container, and sums up what
// the tree will take. Most references lead to small leaves, and those are told by their first byte.
class BinaryWalk {
 public:
  BinaryWalk(const char* bytes, std::size_t length)
      : bytes_(bytes),
        length_(length),
        allowance_(PlistLimits::kFreeSize + PlistLimits::kSizePerByte * length) {}

  bool KeepsWithinLimits() {
    if (!ReadTrailer() || !Visit(ObjectAt(root_))) return false;
    while (depth_ > 0) {
      Frame& innermost = open_[depth_ - 1];
      const char* const reference = SkipSmallLeaves(innermost.next, innermost.end);
      if (reference == innermost.end) {
        --depth_;
      } else {
        innermost.next = reference + reference_size_;
        if (!Visit(ObjectAt(ReferenceAt(reference)))) return false;
      }
    }
    return true;
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

  // The references of an open container that are still to be followed.
  struct Frame {
    const char* next;
    const char* end;
  };

  static constexpr std::size_t kHeaderSize = 8;
  static constexpr std::size_t kTrailerSize = 32;

  static std::uint64_t ReadEightBytes(const char* at) {
    std::uint64_t value;
    std::memcpy(&value, at, sizeof value);
    return std::endian::native == std::endian::little ? __builtin_bswap64(value) : value;
  }

  // A big-endian number of one to eight bytes. Eight bytes can be read wherever one begins, since the
  // trailer stands behind all of them.
  static std::uint64_t ReadNumber(const char* at, std::size_t size) {
    return ReadEightBytes(at) >> (64 - 8 * size);
  }

  static bool IsNumberSize(std::size_t size) { return size >= 1 && size <= 8; }

  bool ReadTrailer() {
    if (length_ < kHeaderSize + kTrailerSize) return false;
    const std::uint64_t trailer = length_ - kTrailerSize;
    offset_size_ = static_cast<unsigned char>(bytes_[trailer + 6]);
    reference_size_ = static_cast<unsigned char>(bytes_[trailer + 7]);
    object_count_ = ReadEightBytes(bytes_ + trailer + 8);
    root_ = ReadEightBytes(bytes_ + trailer + 16);
    table_offset_ = ReadEightBytes(bytes_ + trailer + 24);
    return IsNumberSize(offset_size_) && IsNumberSize(reference_size_) && table_offset_ >= kHeaderSize &&
           table_offset_ < trailer && object_count_ <= (trailer - table_offset_) / offset_size_;
  }

  std::uint64_t ReferenceAt(const char* at) const { return ReadNumber(at, reference_size_); }

  // Where the object stands, or null where the parser gives up.
  const char* ObjectAt(std::uint64_t index) const {
    if (index >= object_count_) return nullptr;
    const std::uint64_t offset = ReadNumber(bytes_ + table_offset_ + index * offset_size_, offset_size_);
    return offset < table_offset_ ? bytes_ + offset : nullptr;
  }

  // The bytes from `body` to the offset table, which stands behind all objects.
  std::uint64_t RoomFrom(const char* body) const {
    return table_offset_ - static_cast<std::uint64_t>(body - bytes_);
  }

  // A leaf that takes no more than kNodeSize, which its container has paid already, and needs no closer look.
  static bool IsSmallLeaf(unsigned char marker) {
    return (marker < kAsciiText + kCountFollows && (marker & kCountMask) != kCountFollows) ||
           (marker & kTypeMask) == kUid;
  }

  static bool IsText(unsigned char marker) {
    return (marker & kTypeMask) == kAsciiText || (marker & kTypeMask) == kUtf16Text;
  }

  // The first reference in [at, end) that leads to anything else, or `end`.
  const char* SkipSmallLeaves(const char* at, const char* end) const {
    for (; at != end; at += reference_size_) {
      const char* const object = ObjectAt(ReferenceAt(at));
      if (object == nullptr || !IsSmallLeaf(static_cast<unsigned char>(*object))) break;
    }
    return at;
  }

  // Whatever the parser refuses ends the walk with false at once: no other part of the file can change that.
  bool Visit(const char* object) {
    if (object == nullptr) return false;
    const auto marker = static_cast<unsigned char>(*object);
    if (IsSmallLeaf(marker)) return true;
    const char* body = object + 1;
    std::uint64_t count = marker & kCountMask;
    if (count == kCountFollows && !ReadCount(body, count)) return false;
    if (count > RoomFrom(body)) return false;
    switch (marker & kTypeMask) {
      case kData:
      case kAsciiText:
        return Spend(count);
      case kUtf16Text:  // three bytes of UTF-8 at most for each unit
        return 2 * count <= RoomFrom(body) && !HoldsNul(body, count) && Spend(3 * count);
      case kArray:
      case kSet:
        return Enter(body, 0, count);
      case kDictionary:
        return Enter(body, count, count);
      default:
        return false;
    }
  }

  // Whether one of `count` UTF-16 units is zero. ASCII texts need no such look: the parser ends them at a
  // NUL.
  static bool HoldsNul(const char* units, std::uint64_t count) {
    for (const char* const end = units + 2 * count; units != end; units += 2) {
      if (units[0] == 0 && units[1] == 0) return true;
    }
    return false;
  }

  // Replaces a count that did not fit into the marker by the number behind it.
  bool ReadCount(const char*& body, std::uint64_t& count) const {
    const auto marker = static_cast<unsigned char>(*body);
    const std::size_t size = std::size_t{1} << (marker & kCountMask);
    if ((marker & kTypeMask) != kInteger || !IsNumberSize(size) || size >= RoomFrom(body)) return false;
    count = ReadNumber(body + 1, size);
    body += 1 + size;
    return true;
  }

  // Opens a container whose references begin at `at`, those to its keys first, and pays for all its nodes. A
  // loop of references ends here too, by its depth.
  bool Enter(const char* at, std::uint64_t keys, std::uint64_t values) {
    const std::uint64_t size = (keys + values) * reference_size_;
    if (depth_ == kMaxDepth || size > RoomFrom(at)) return false;
    ++depth_;
    if (!Spend((keys + values) * (PlistLimits::kNodeSize + depth_))) return false;
    const char* const end = at + size;
    for (; keys != 0; --keys, at += reference_size_) {
      const char* const key = ObjectAt(ReferenceAt(at));
      if (key == nullptr || !IsText(static_cast<unsigned char>(*key)) || !Visit(key)) return false;
    }
    open_[depth_ - 1] = {at, end};
    return true;
  }

  bool Spend(std::uint64_t cost) {
    if (cost > allowance_) return false;
    allowance_ -= cost;
    return true;
  }

  const char* bytes_;
  std::uint64_t length_;
  std::uint64_t allowance_;
  std::size_t offset_size_ = 0;
  std::size_t reference_size_ = 0;
  std::uint64_t object_count_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t table_offset_ = 0;
  std::size_t depth_ = 0;
  std::array<Frame, kMaxDepth> open_;  // the first depth_ of them; left uninitialised, since most stay unused
};

// Whether a NUL stands before anything else than NULs; those at the end are what is missing of a file that
// shrank.
bool HoldsNulInside(const char* bytes, std::size_t length) {
  if (length == 0) return false;
  const auto* const nul = static_cast<const char*>(std::memchr(bytes, 0, length));
  if (nul == nullptr) return false;
  const auto rest = static_cast<std::size_t>(bytes + length - nul);
  return std::memcmp(nul, nul + 1, rest - 1) != 0;  // each byte against the one behind it
}

// Whether the bytes hold more "<array" and "<dict" than the depth may be, wherever they stand. Few lists do,
// and where none do, nothing else has to be known. Looked for in blocks without branches, which compilers
// turn into vector instructions.
bool MayNestTooDeep(const char* bytes, std::size_t length) {
  constexpr std::size_t kBlock = 64;
  constexpr std::size_t kLookAhead = 2;
  const auto opens = [bytes](std::size_t at) {
    return static_cast<unsigned char>(
        (bytes[at] == '<') & ((bytes[at + 1] == 'a') | ((bytes[at + 1] == 'd') & (bytes[at + 2] == 'i'))));
  };
  std::size_t count = 0;
  std::size_t at = 0;
  for (; at + kBlock + kLookAhead <= length && count <= kMaxDepth; at += kBlock) {
    unsigned char in_block = 0;
    for (std::size_t i = 0; i < kBlock; ++i) in_block = static_cast<unsigned char>(in_block + opens(at + i));
    count += in_block;
  }
  for (; at + kLookAhead < length && count <= kMaxDepth; ++at) count += opens(at);
  return count > kMaxDepth;
}

// Goes from tag to tag of an XML list. Comments, CDATA and quotes are skipped as the parser skips them, which
// is not in every corner what XML says. Where the parser fails this may go on, which changes nothing.
class XmlWalk {
 public:
  XmlWalk(const char* bytes, std::size_t length) : at_(bytes), end_(bytes + length) {}

  bool KeepsWithinLimits() {
    std::size_t depth = 0;
    while (FindTag()) {
      if (*at_ == '?' || *at_ == '!') {
        if (!(*at_ == '?' ? SkipPastUnquoted("?>") : SkipDeclaration())) return false;
        continue;
      }
      if (IsOtherEnd()) continue;
      Tag tag;
      if (!ReadTag(tag)) return false;
      switch (tag.kind) {
        case Kind::kOther:
          break;
        case Kind::kLeaf:
          if (depth == 0) return true;  // the root, and nothing behind it is read
          break;
        case Kind::kContainer:
          if (depth == kMaxDepth) return false;
          // What follows an empty root, though it should not, becomes part of it.
          if (!tag.empty || depth == 0) ++depth;
          break;
        case Kind::kContainerEnd:
          if (depth <= 1) return true;  // the end of the root, and nothing behind it is read
          --depth;
          break;
        case Kind::kUnknown:
          return false;
      }
    }
    return true;
  }

 private:
  enum class Kind { kOther, kContainer, kContainerEnd, kLeaf, kUnknown };

  struct Tag {
    Kind kind = Kind::kUnknown;
    bool empty = false;
  };

  // Comparisons of a known length, so that each is one of integers.
  template <std::size_t kSize>
  static bool Is(std::string_view name, const char (&text)[kSize]) {
    return name.size() == kSize - 1 && std::memcmp(name.data(), text, kSize - 1) == 0;
  }

  static bool IsLeaf(std::string_view name) {
    return Is(name, "key") || Is(name, "string") || Is(name, "integer") || Is(name, "true") ||
           Is(name, "false") || Is(name, "data") || Is(name, "date") || Is(name, "real") || Is(name, "null");
  }

  static Kind KindOf(std::string_view name) {
    if (IsLeaf(name)) return Kind::kLeaf;
    if (Is(name, "dict") || Is(name, "array")) return Kind::kContainer;
    if (Is(name, "/dict") || Is(name, "/array")) return Kind::kContainerEnd;
    if (name == "/data" || name == "/date" || name == "plist") return Kind::kOther;
    return Kind::kUnknown;
  }

  // An end tag that cannot be a container's: it is what the parser expects, or the parser fails.
  bool IsOtherEnd() const { return *at_ == '/' && at_ + 1 != end_ && at_[1] != 'a' && at_[1] != 'd'; }

  static bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

  std::string_view Rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }

  // Behind the next place where `text` stands. False, as in all of these: there is none, and the parser
  // fails.
  bool SkipPast(std::string_view text) {
    const std::size_t found = Rest().find(text);
    if (found == std::string_view::npos) return false;
    at_ += found + text.size();
    return true;
  }

  // To the next place outside double quotes where `stop` says so.
  template <typename Stop>
  bool FindUnquoted(Stop stop) {
    for (; at_ != end_ && !stop(); ++at_) {
      if (*at_ != '"') continue;
      ++at_;
      if (!SkipPast("\"")) return false;
      --at_;
    }
    return at_ != end_;
  }

  bool SkipPastUnquoted(std::string_view text) {
    if (!FindUnquoted([&] { return Rest().starts_with(text); })) return false;
    at_ += text.size();
    return true;
  }

  // Behind the next "<", unless that is the last byte.
  bool FindTag() {
    const auto* const found = static_cast<const char*>(std::memchr(at_, '<', Rest().size()));
    if (found == nullptr || found + 1 == end_) return false;
    at_ = found + 1;
    return true;
  }

  bool SkipPrefix(std::string_view prefix) {
    if (!Rest().starts_with(prefix)) return false;
    at_ += prefix.size();
    return true;
  }

  bool SkipDeclaration() {
    if (SkipPrefix("!--")) return SkipPast("-->");
    if (SkipPrefix("![CDATA[")) return SkipPast("]]>");
    if (!SkipPrefix("!DOCTYPE")) return false;
    if (!FindUnquoted([&] { return *at_ == '[' || *at_ == '>'; })) return false;
    return *at_ == '>' || SkipPastUnquoted("]>");
  }

  // The tag that begins here, up to its ">". A name with a NUL in it is unknown here, though libplist would
  // read the part in front: its search for the end tag would be misled.
  bool ReadTag(Tag& tag) {
    const char* const start = at_;
    // What ends a name is no greater than ">", and letters are greater.
    while (at_ != end_ && (*at_ > '>' || (*at_ != '>' && *at_ != '<' && !IsSpace(*at_)))) ++at_;
    std::string_view name(start, static_cast<std::size_t>(at_ - start));
    if (!FindUnquoted([&] { return *at_ == '>' || *at_ == '<'; }) || *at_ == '<') return false;
    tag.empty = at_[-1] == '/';
    if (tag.empty && at_ == start + name.size()) name.remove_suffix(1);
    tag.kind = KindOf(name);
    return true;
  }

  const char* at_;
  const char* end_;
};

}  // namespace

bool PlistLimits::BinaryIsSafe(const char* bytes, std::size_t length) {
  return BinaryWalk(bytes, length).KeepsWithinLimits();
}

bool PlistLimits::XmlIsSafe(const char* bytes, std::size_t length) {
  if (HoldsNulInside(bytes, length)) return false;
  return !MayNestTooDeep(bytes, length) || XmlWalk(bytes, length).KeepsWithinLimits();
}
