#include "keyed_archive.h"

#include <cstdint>
#include <limits>

#include "common/binary_plist.h"
#include "common/plist_limits.h"

namespace {

using BinaryPlist::Object;

constexpr std::size_t kLargest = 1 << 20;  // bytes; an archive has a few hundred

// The dictionary that the archive's root refers to.
bool FindRootObject(const BinaryPlist::Reader& reader, Object& file) {
  Object archive, objects, top, root;
  return reader.Read(reader.Find(reader.Root()), archive) && reader.FindItem(archive, "$objects", objects) &&
         reader.FindItem(archive, "$top", top) && reader.FindItem(top, "root", root) &&
         root.type == BinaryPlist::kUid &&
         reader.FindElement(objects, BinaryPlist::Reader::ValueOf(root), file);
}

}  // namespace

bool DecodeKeyedArchive(const char* bytes, std::size_t length, Entry& entry) {
  BinaryPlist::Reader reader;
  Object file, size, modified;
  if (length > kLargest || !reader.Open(bytes, length) || !PlistLimits::BinaryIsValid(reader, length) ||
      !FindRootObject(reader, file) || !reader.FindItem(file, "Size", size) ||
      size.type != BinaryPlist::kInteger) {
    return false;
  }
  const std::uint64_t value = BinaryPlist::Reader::ValueOf(size);
  if (value > std::numeric_limits<std::int64_t>::max()) return false;  // a negative number
  entry.size = value;
  if (reader.FindItem(file, "LastModified", modified) && modified.type == BinaryPlist::kInteger) {
    entry.modified = static_cast<long>(BinaryPlist::Reader::ValueOf(modified));
  }
  return true;
}
