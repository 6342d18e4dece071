#include "common/plist_limits.h"

#include <algorithm>
#include <array>

#include "common/binary_plist.h"

namespace {

using BinaryPlist::Object;

// Whether an object with this marker fits in kNodeSize, which its container has already been charged. Most
// objects do, and their markers are all that has to be read.
constexpr auto kIsSmallLeaf = [] {
  using namespace BinaryPlist;
  std::array<bool, 256> small{};
  for (unsigned marker = 0; marker < small.size(); ++marker) {
    small[marker] = (marker < kAsciiString + kCountFollows && (marker & kCountMask) != kCountFollows) ||
                    (marker & kTypeMask) == kUid;
  }
  return small;
}();

enum class Leaves { kSkipped, kRead };

// Follows the references container by container, as libplist does, and adds up what the tree takes.
template <Leaves kLeaves>
class Walk {
 public:
  Walk(const BinaryPlist::Reader& reader, std::size_t length, std::size_t max_depth)
      : reader_(reader),
        max_depth_(std::min(max_depth, PlistLimits::kMaxDepth)),
        budget_(PlistLimits::kFreeSize + PlistLimits::kSizePerByte * length) {}

  bool StaysWithinLimits() {
    References innermost{};
    const char* object = reader_.Find(reader_.Root());
    while (Visit(object, innermost)) {
      while ((object = NextToVisit(innermost)) == nullptr) {
        if (depth_ == 0) return true;
        innermost = outer_[--depth_];
      }
    }
    return false;
  }

 private:
  // The references of an open container that are still to be followed. Around the root there are none.
  struct References {
    const char* next;
    const char* end;
  };

  // The marker of the next object to visit, or null at the end of the container.
  const char* NextToVisit(References& references) const {
    while (references.next != references.end) {
      const char* const object = reader_.Find(reader_.Reference(references.next));
      references.next += reader_.ReferenceSize();
      if (!MaySkip(object)) return object;
    }
    return nullptr;
  }

  static bool MaySkip(const char* object) {
    return kLeaves == Leaves::kSkipped && kIsSmallLeaf[static_cast<unsigned char>(*object)];
  }

  // May also return false where libplist rejects the object, since it then rejects the whole list.
  bool Visit(const char* marker, References& innermost) {
    if (MaySkip(marker)) return true;
    Object object;
    // By far the most frequent of what is left: libplist checks itself whether there is room for it.
    if (const auto byte = static_cast<unsigned char>(*marker);
        kLeaves == Leaves::kSkipped &&
        (byte | 0x10) == (BinaryPlist::kAsciiString | BinaryPlist::kCountFollows))
      return reader_.ReadCount(marker + 1, object) && Spend(object.count);
    if (!reader_.Read(marker, object)) return false;
    switch (object.type) {
      case BinaryPlist::kData:
      case BinaryPlist::kAsciiString:
        return Spend(object.count);
      case BinaryPlist::kUtf16String:
        return Spend(3 * object.count);  // at most three bytes of UTF-8 for each unit
      case BinaryPlist::kArray:
      case BinaryPlist::kSet:
        return Enter(object, object.count, innermost);
      case BinaryPlist::kDictionary:
        return (kLeaves == Leaves::kSkipped || HasStringKeys(object)) &&
               Enter(object, 2 * object.count, innermost);
      default:
        return true;
    }
  }

  // Opens a container and pays for its nodes. The depth also ends a cycle of references.
  bool Enter(const Object& container, std::uint64_t count, References& innermost) {
    if (depth_ == max_depth_) return false;
    const std::uint64_t size = count * reader_.ReferenceSize();
    outer_[depth_++] = innermost;
    innermost = {container.body, container.body + size};
    return Spend(count * (PlistLimits::kNodeSize + depth_));
  }

  bool Spend(std::uint64_t cost) {
    if (cost > budget_) return false;
    budget_ -= cost;
    return true;
  }

  bool HasStringKeys(const Object& dictionary) const {
    const char* key = dictionary.body;
    for (std::uint64_t left = dictionary.count; left != 0; --left, key += reader_.ReferenceSize()) {
      const char* const marker = reader_.Find(reader_.Reference(key));
      const unsigned type = static_cast<unsigned char>(*marker) & BinaryPlist::kTypeMask;
      if (type != BinaryPlist::kAsciiString && type != BinaryPlist::kUtf16String) return false;
    }
    return true;
  }

  const BinaryPlist::Reader reader_;  // a copy, which the compiler keeps in registers
  std::size_t max_depth_;
  std::uint64_t budget_;
  std::size_t depth_ = 0;
  // The containers around the innermost one, depth_ in all. Not initialized, since most are never used.
  std::array<References, PlistLimits::kMaxDepth> outer_;
};

}  // namespace

bool PlistLimits::BinaryIsSafe(const char* bytes, std::size_t length, std::size_t max_depth) {
  BinaryPlist::Reader reader;
  return reader.Open(bytes, length) && Walk<Leaves::kSkipped>(reader, length, max_depth).StaysWithinLimits();
}

bool PlistLimits::BinaryIsValid(const BinaryPlist::Reader& reader, std::size_t length) {
  return Walk<Leaves::kRead>(reader, length, kMaxDepth).StaysWithinLimits();
}
