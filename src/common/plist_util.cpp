#include "common/plist_util.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>

#include "common/basic/basic_services.h"
#include "common/libplist.h"
#include "common/owners.h"
#include "common/plist_limits.h"
#include "common/text_or_empty.h"
#include "common/xml_plist.h"

namespace {

using Owners::Block;
using Owners::Stream;

// Unbuffered: one read fills the caller's block. A buffer would cost an allocation, a call for the file's
// block size and a second read.
Stream OpenForReading(const char* path) {
  Stream stream(BasUtilityFile()->OpenFile(path, "rb"));
  if (stream != nullptr) std::setvbuf(stream.get(), nullptr, _IONBF, 0);
  return stream;
}

// `size` bytes of the file and a NUL. Null when there is no stream or no memory.
Block ReadWhole(const char* path, std::uint64_t size) {
  const Stream stream = OpenForReading(path);
  if (stream == nullptr || size >= std::numeric_limits<std::size_t>::max()) return nullptr;
  const auto wanted = static_cast<std::size_t>(size);
  Block bytes(static_cast<char*>(std::malloc(wanted + 1)));
  if (bytes == nullptr) return nullptr;
  const std::size_t read = std::fread(bytes.get(), 1, wanted, stream.get());
  bytes.get()[read] = '\0';
  if (read == wanted) return bytes;
  // The file is shorter than its size. Untouched zeros from calloc take no memory.
  Block zeroed(static_cast<char*>(std::calloc(wanted + 1, 1)));
  if (zeroed != nullptr) std::memcpy(zeroed.get(), bytes.get(), read);
  return zeroed;
}

plist_t ParseBinary(const char* bytes, std::uint32_t length) {
  return PlistLimits::BinaryIsSafe(bytes, length) ? Libplist::Parse(plist_from_bin, bytes, length) : nullptr;
}

plist_t ParseXml(const char* bytes, std::uint32_t length) {
  if (!XmlPlist::IsSafe(bytes, length, PlistLimits::kMaxDepth)) return nullptr;
  if (!XmlPlist::HasSlowTexts(bytes, length)) return Libplist::Parse(plist_from_xml, bytes, length);
  const XmlPlist::Copy copy = XmlPlist::DecodeSlowTexts(bytes, length);
  if (copy.bytes == nullptr) return nullptr;
  return Libplist::Parse(plist_from_xml, copy.bytes.get(), static_cast<std::uint32_t>(copy.length));
}

bool IsA(plist_t node, plist_type type) {
  return plist_get_node_type(node) == type;  // null has a type of its own
}

void InsertString(plist_t dict, const char* key, const char* value) {
  if (key != nullptr && IsA(dict, PLIST_DICT)) plist_dict_set_item(dict, key, plist_new_string(value));
}

}  // namespace

std::int32_t PlistUtil::IsBinPlist(const char* path) {
  constexpr char kMagic[] = "bplist00";
  const Stream stream = OpenForReading(TextOrEmpty(path));
  if (stream == nullptr) return 0;
  char start[sizeof kMagic - 1];
  const std::size_t read = std::fread(start, 1, sizeof start, stream.get());
  return read == sizeof start && std::memcmp(start, kMagic, read) == 0 ? 1 : 0;
}

plist_t PlistUtil::ReadPlist(const char* path) {
  path = TextOrEmpty(path);
  const std::uint64_t size = BasUtilityFile()->GetFileSize(path);
  if (size == 0) return nullptr;
  const Block bytes = ReadWhole(path, size);
  if (bytes == nullptr) return nullptr;

  const auto length = static_cast<std::uint32_t>(size);  // the parsers take 32-bit lengths
  return IsBinPlist(path) != 0 ? ParseBinary(bytes.get(), length) : ParseXml(bytes.get(), length);
}

void PlistUtil::AppendPlistArrayString(plist_t array, const char* value) {
  if (IsA(array, PLIST_ARRAY)) plist_array_append_item(array, plist_new_string(TextOrEmpty(value)));
}

void PlistUtil::AddNoneValuePlistDictString(plist_t dict, const char* key, const char* value) {
  const bool missing = value == nullptr || *value == '\0';
  InsertString(dict, key, missing ? "(None)" : value);
}

void PlistUtil::InsertPlistDictString(plist_t dict, const char* key, const char* value) {
  InsertString(dict, key, TextOrEmpty(value));
}

plist_t PlistUtil::PlistCopyZero(plist_t node) {
  return node != nullptr ? plist_copy(node) : plist_new_uint(0);
}

plist_t PlistUtil::PlistCopyEmptyString(plist_t node) {
  return node != nullptr ? plist_copy(node) : plist_new_string("");
}

void PlistUtil::PrintPlist(plist_t node) {
  if (node == nullptr) return;
  // Two streams write to one output. Each is flushed before the other writes, since a host may have called
  // sync_with_stdio(false).
  std::cout.flush();
  std::puts(".................PrintPlist BEGIN.................");
  std::fflush(stdout);

  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node, &text, &length);
  if (const Libplist::Text xml(text); xml != nullptr) {
    std::cout.write(xml.get(),
                    static_cast<std::streamsize>(std::strlen(xml.get())));  // no width or fill applies
    std::cout << std::endl;
  }
  std::puts(".................PrintPlist END.................");
  std::fflush(stdout);
}

std::uint64_t PlistUtil::GetIntegerValue(plist_t node) {
  std::uint64_t value = 0;
  plist_get_uint_val(node, &value);  // leaves the zero for null and for every other type
  return value;
}

std::uint64_t PlistUtil::GetDictOrUidIntegerValue(plist_t node, const char* key) {
  std::uint64_t value = 0;
  const plist_type type = plist_get_node_type(node);
  if (type == PLIST_UID) {
    plist_get_uid_val(node, &value);
  } else if (type == PLIST_DICT && key != nullptr) {
    value = GetIntegerValue(plist_dict_get_item(node, key));
  }
  return value;
}
