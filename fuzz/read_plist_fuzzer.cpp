// Any bytes as a property-list file: reading, printing, copying and freeing must end, in bounded memory, leak
// nothing, and give no tree that is deeper than the limit, which is a small one here.

#include <algorithm>
#include <cstdlib>

#include "common/plist_limits.h"
#include "common/plist_util.h"
#include "fuzz/check.h"
#include "fuzz/memory_file_service.h"
#include "support/services.h"

namespace {

// The levels of containers, one inside the other.
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static MemoryFileService memory_file;
  static const ServiceOverride<IBasUtilityFile> in_place(&memory_file);
  memory_file.SetContents(bytes, size);

  const plist_t root = PlistUtil::ReadPlist("list.plist");
  if (root == nullptr) return 0;
  Fuzz::Require(DepthOf(root) <= PlistLimits::kMaxDepth, "the tree is no deeper than the limit");
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root, &xml, &length);  // what PrintPlist writes
  std::free(xml);
  plist_free(PlistUtil::PlistCopyZero(root));
  plist_free(root);
  return 0;
}
