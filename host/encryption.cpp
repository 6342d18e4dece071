#include "encryption.h"

#include <fcntl.h>

#include "backup_plist.h"
#include "failure.h"
#include "file_status.h"

namespace {

bool IsEncrypted(const BackupFolder& folder) {
  const std::string path = folder.PathOf("Manifest.plist");
  const FileStatus status = StatusAt(AT_FDCWD, path.c_str());
  if (status.kind != FileKind::Regular) return false;
  const Plist manifest = ReadBackupPlist(path, status.size);
  const plist_t value = plist_dict_get_item(manifest.get(), "IsEncrypted");  // null for any but a dictionary
  std::uint8_t encrypted = 0;
  if (plist_get_node_type(value) == PLIST_BOOLEAN) plist_get_bool_val(value, &encrypted);
  return encrypted != 0;
}

}  // namespace

void RefuseEncrypted(const BackupFolder& folder) {
  if (IsEncrypted(folder)) throw Failure(folder.Root() + ": the backup is encrypted");
}
