// Any bytes as the keyed archive of a file. What is read from the bytes must be what a tree of libplist's
// gives.

#include "host/keyed_archive.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "common/libplist.h"
#include "common/plist_limits.h"
#include "common/plist_util.h"
#include "fuzz/check.h"

namespace {

// Null when there is no such item, also when `dict` is no dictionary.
plist_t ItemOf(plist_t dict, const char* key) {
  return plist_get_node_type(dict) == PLIST_DICT ? plist_dict_get_item(dict, key) : nullptr;
}

std::optional<std::uint64_t> IntegerOf(plist_t dict, const char* key) {
  const plist_t item = ItemOf(dict, key);
  if (plist_get_node_type(item) != PLIST_UINT) return std::nullopt;
  return PlistUtil::GetIntegerValue(item);
}

// The dictionary that the archive's root refers to, or null.
plist_t RootObject(plist_t archive) {
  const plist_t objects = ItemOf(archive, "$objects");
  const plist_t root = ItemOf(ItemOf(archive, "$top"), "root");
  if (plist_get_node_type(objects) != PLIST_ARRAY || plist_get_node_type(root) != PLIST_UID) return nullptr;
  const std::uint64_t index = PlistUtil::GetDictOrUidIntegerValue(root, nullptr);
  if (index >= plist_array_get_size(objects)) return nullptr;
  return plist_array_get_item(objects, static_cast<std::uint32_t>(index));
}

bool DecodeByTree(const char* bytes, std::size_t length, Entry& entry) {
  if (!PlistLimits::BinaryIsSafe(bytes, length)) return false;
  const Libplist::Node archive(Libplist::Parse(plist_from_bin, bytes, static_cast<std::uint32_t>(length)));
  const plist_t file = RootObject(archive.get());
  const auto size = IntegerOf(file, "Size");
  if (!size || *size > std::numeric_limits<std::int64_t>::max()) return false;
  entry.size = size;
  if (const auto modified = IntegerOf(file, "LastModified")) entry.modified = static_cast<long>(*modified);
  return true;
}

// Of surrogates without their other half, libplist drops some: a key with one is "Size" to it.
bool MayHaveSurrogates(std::string_view bytes) {
  return std::any_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0xF8) == 0xD8; }) &&
         std::any_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0xF0) == 0x60; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Fuzz::Text archive(Fuzz::Input(bytes, size));
  Entry entry, expected;
  const bool decoded = DecodeKeyedArchive(archive.c_str(), size, entry);
  const bool decoded_by_tree = DecodeByTree(archive.c_str(), size, expected);
  if (MayHaveSurrogates(Fuzz::Input(bytes, size))) return 0;
  Fuzz::Require(decoded == decoded_by_tree, "the bytes and the tree are archives of a file or both are not");
  Fuzz::Require(entry.size == expected.size, "they give the same size");
  Fuzz::Require(entry.modified == expected.modified, "they give the same time");
  return 0;
}
