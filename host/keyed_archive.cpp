#include "keyed_archive.h"

#include <cstdint>
#include <limits>

#include "common/plist_limits.h"
#include "common/plist_util.h"

namespace {

constexpr std::size_t kLargest = 1 << 20;

bool IsA(plist_t node, plist_type type) {
  return plist_get_node_type(node) == type;
}

// Null when there is no such item, also when `dict` is no dictionary.
plist_t ItemOf(plist_t dict, const char* key) {
  return IsA(dict, PLIST_DICT) ? plist_dict_get_item(dict, key) : nullptr;
}

// The dictionary that the archive's root points to, or null.
plist_t RootObject(plist_t archive) {
  const plist_t objects = ItemOf(archive, "$objects");
  const plist_t root = ItemOf(ItemOf(archive, "$top"), "root");
  if (!IsA(objects, PLIST_ARRAY) || !IsA(root, PLIST_UID)) return nullptr;
  const std::uint64_t index = PlistUtil::GetDictOrUidIntegerValue(root, nullptr);
  if (index >= plist_array_get_size(objects)) return nullptr;
  return plist_array_get_item(objects, static_cast<std::uint32_t>(index));
}

}  // namespace

bool DecodeKeyedArchive(const char* bytes, std::size_t length, Entry& entry) {
  if (length == 0 || length > kLargest || !PlistLimits::BinaryIsSafe(bytes, length)) return false;
  plist_t parsed = nullptr;
  static_cast<void>(plist_from_bin(bytes, static_cast<std::uint32_t>(length), &parsed));
  const Plist archive(parsed);

  const plist_t file = RootObject(archive.get());
  if (!IsA(ItemOf(file, "Size"), PLIST_UINT)) return false;
  const std::uint64_t size = PlistUtil::GetDictOrUidIntegerValue(file, "Size");
  if (size > std::numeric_limits<std::int64_t>::max()) return false;  // a negative number
  entry.size = size;
  if (IsA(ItemOf(file, "LastModified"), PLIST_UINT)) {
    entry.modified = static_cast<long>(PlistUtil::GetDictOrUidIntegerValue(file, "LastModified"));
  }
  return true;
}
