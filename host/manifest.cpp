#include "manifest.h"

std::unique_ptr<Manifest> OpenManifest(const BackupFolder& folder) {
  const std::string& path = folder.ManifestPath();
  return folder.TwoLevel() ? OpenManifestDb(path) : OpenManifestMbdb(path);
}
