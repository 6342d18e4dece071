#include "manifest.h"

#include "encryption.h"
#include "failure.h"

std::unique_ptr<Manifest> OpenManifest(const BackupFolder& folder) {
  const std::string& path = folder.ManifestPath();
  try {
    return folder.TwoLevel() ? OpenManifestDb(path) : OpenManifestMbdb(path);
  } catch (const Failure&) {
    RefuseEncrypted(folder);
    throw;
  }
}
