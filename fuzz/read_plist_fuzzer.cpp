// Any bytes as a property-list file: reading, printing, copying and freeing must end, in bounded memory, and
// leak nothing.

#include <cstdlib>

#include "common/plist_util.h"
#include "fuzz/memory_file_service.h"
#include "support/services.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static MemoryFileService memory_file;
  static const ServiceOverride<IBasUtilityFile> in_place(&memory_file);
  memory_file.SetContents(bytes, size);

  const plist_t root = PlistUtil::ReadPlist("list.plist");
  if (root == nullptr) return 0;
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root, &xml, &length);  // what PrintPlist writes
  std::free(xml);
  plist_free(PlistUtil::PlistCopyZero(root));
  plist_free(root);
  return 0;
}
