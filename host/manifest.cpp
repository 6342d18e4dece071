#include "manifest.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

namespace {

// Whether a manifest stands at `path`. Throws when what stands there must not be opened.
bool Stands(const std::string& path) {
  const FileStatus status = StatusOf(path);
  if (status.kind == FileKind::Absent && status.error != ENOENT) {
    throw Failure(fmt::format("{}: {}", path, std::strerror(status.error)));
  }
  if (status.kind == FileKind::Absent) return false;
  if (status.kind == FileKind::Link) throw Failure(path + ": is a symbolic link, which is not followed");
  if (status.kind != FileKind::Regular) throw Failure(path + ": is not a regular file");
  if (status.size == 0) throw Failure(path + ": is empty");
  return true;
}

}  // namespace

std::unique_ptr<Manifest> OpenManifest(const BackupFolder& folder) {
  if (const std::string path = folder.PathOf("Manifest.db"); Stands(path)) return OpenManifestDb(path);
  if (const std::string path = folder.PathOf("Manifest.mbdb"); Stands(path)) return OpenManifestMbdb(path);
  throw Failure(folder.PathOf("") + ": holds no backup, neither Manifest.db nor Manifest.mbdb stands there");
}
