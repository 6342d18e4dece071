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
    if (depth_ == kMaxDepth || size > RoomFrom(references)) return false;
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
  std::uint64_t allowance_;
  Numbers offsets_{1};
  Numbers references_{1};
  std::uint64_t object_count_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t table_offset_ = 0;
  std::size_t depth_ = 0;
  // What stands around the innermost container, depth_ in all. Left uninitialised, since most stay unused.
  std::array<Frame, kMaxDepth> outer_;
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
// turn into vector instructions, and only from one "<" on, since long texts and data hold none.
bool MayNestTooDeep(const char* bytes, std::size_t length) {
  constexpr std::size_t kBlock = 256;
  constexpr std::size_t kLookAhead = 2;
  constexpr std::size_t kShortestTag = 6;
  if (length <= kMaxDepth * kShortestTag) return false;
  const auto opens = [](const char* at) {
    return static_cast<unsigned char>((at[0] == '<') & ((at[1] == 'a') | ((at[1] == 'd') & (at[2] == 'i'))));
  };
  const char* const end = bytes + length - kLookAhead;
  std::size_t count = 0;
  while (count <= kMaxDepth) {
    bytes = static_cast<const char*>(std::memchr(bytes, '<', static_cast<std::size_t>(end - bytes)));
    if (bytes == nullptr) break;
    if (static_cast<std::size_t>(end - bytes) < kBlock) {
      for (; bytes != end; ++bytes) count += opens(bytes);
      break;
    }
    unsigned char in_block = 0;
    for (std::size_t i = 0; i < kBlock; ++i)
      in_block = static_cast<unsigned char>(in_block + opens(bytes + i));
    count += in_block;
    bytes += kBlock;
  }
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
      if (IsLeafEnd() || (depth > 0 && IsPlainLeaf())) continue;
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
    if (Is(name, "dict") || Is(name, "array")) return Kind::kContainer;
    if (Is(name, "/dict") || Is(name, "/array")) return Kind::kContainerEnd;
    if (IsLeaf(name)) return Kind::kLeaf;
    if (name == "/data" || name == "/date" || name == "plist" || name == "/plist") return Kind::kOther;
    return Kind::kUnknown;
  }

  // A leaf's end tag: nothing but its name and white space stands in it, or the parser fails. In those of
  // containers and of "plist" there may be more, quotes too.
  bool IsLeafEnd() const {
    return *at_ == '/' && at_ + 1 != end_ && at_[1] != 'a' && at_[1] != 'd' && at_[1] != 'p';
  }

  // A leaf's start tag as writers write it, without attributes. Told by the first letter and the place of the
  // ">": should the letters between be no leaf's name, the parser fails here.
  bool IsPlainLeaf() const {
    static constexpr auto kLengths = [] {
      std::array<unsigned char, 256> lengths{};
      for (const std::string_view tag : {"key", "string", "integer", "true/", "false/", "real"})
        lengths[static_cast<unsigned char>(tag[0])] = static_cast<unsigned char>(tag.size());
      return lengths;
    }();
    const std::size_t length = kLengths[static_cast<unsigned char>(*at_)];
    return length != 0 && length < Rest().size() && at_[length] == '>';
  }

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
