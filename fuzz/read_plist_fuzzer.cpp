// Any bytes as a property-list file. Reading, printing, copying and freeing must end in bounded memory and
// leak nothing. With a limit of six levels, which a fuzzer reaches, no tree may be deeper; and decoding the
// texts of an XML list must not change its tree.

#include <algorithm>
#include <cstdlib>
#include <string>

#include "common/libplist.h"
#include "common/plist_limits.h"
#include "common/plist_util.h"
#include "common/xml_plist.h"
#include "fuzz/check.h"
#include "fuzz/memory_file_service.h"
#include "support/services.h"

namespace {

using Libplist::Node;

constexpr std::size_t kMaxDepth = 6;

// How many levels of containers there are.
std::size_t DepthOf(plist_t node) {
  std::size_t inside = 0;
  if (plist_get_node_type(node) == PLIST_ARRAY) {
    for (std::uint32_t at = 0; at < plist_array_get_size(node); ++at) {
      inside = std::max(inside, DepthOf(plist_array_get_item(node, at)));
    }
    return inside + 1;
  }
  if (plist_get_node_type(node) != PLIST_DICT) return 0;
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  plist_t item = nullptr;
  do {
    plist_dict_next_item(node, iterator, nullptr, &item);
    inside = std::max(inside, DepthOf(item));
  } while (item != nullptr);
  std::free(iterator);
  return inside + 1;
}

std::string Xml(const Node& root) {
  return root != nullptr ? Libplist::Encoded(root.get()) : "null";
}

Node ParseXml(const char* bytes, std::size_t size) {
  return Node(Libplist::Parse(plist_from_xml, bytes, static_cast<std::uint32_t>(size)));
}

void CheckXml(const Fuzz::Text& list, std::size_t size) {
  if (!XmlPlist::IsSafe(list.c_str(), size, kMaxDepth)) return;
  const Node root = ParseXml(list.c_str(), size);
  Fuzz::Require(DepthOf(root.get()) <= kMaxDepth, "an XML tree is no deeper than the limit");
  const XmlPlist::Copy copy = XmlPlist::DecodeSlowTexts(list.c_str(), size);
  Fuzz::Require(Xml(ParseXml(copy.bytes.get(), copy.length)) == Xml(root),
                "the decoded copy gives the same tree");
}

void CheckBinary(const Fuzz::Text& list, std::size_t size) {
  if (!PlistLimits::BinaryIsSafe(list.c_str(), size, kMaxDepth)) return;
  const Node root(Libplist::Parse(plist_from_bin, list.c_str(), static_cast<std::uint32_t>(size)));
  Fuzz::Require(DepthOf(root.get()) <= kMaxDepth, "a binary tree is no deeper than the limit");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static MemoryFileService memory_file;
  static const ServiceOverride<IBasUtilityFile> in_place(&memory_file);
  memory_file.SetContents(bytes, size);
  const Node root(PlistUtil::ReadPlist("list.plist"));
  Xml(root);  // what PrintPlist writes
  if (root != nullptr) plist_free(PlistUtil::PlistCopyZero(root.get()));

  const Fuzz::Text list(Fuzz::Input(bytes, size));
  CheckXml(list, size);
  CheckBinary(list, size);
  return 0;
}
