// Reads a property list, adds a text to it and prints it.
//
//   plist_util [FILE]

#include "common/plist_util.h"

#include "expect.h"

int main(int argument_count, char** arguments) {
  const char* name = nullptr;
  plist_t info = PlistUtil::ReadPlist("/backups/1/Info.plist");
  if (argument_count > 1) info = PlistUtil::ReadPlist(arguments[1]);
  if (info == nullptr) info = plist_new_dict();
  PlistUtil::InsertPlistDictString(info, "Device Name", name);
  PlistUtil::PrintPlist(info);
  Expect(plist_get_node_type(plist_dict_get_item(info, "Device Name")) == PLIST_STRING);
  plist_free(info);
}
