#include "backup_folder.h"

#include <cerrno>
#include <cstring>

#include "common/utils.h"
#include "failure.h"
#include "file_status.h"
#include "owners.h"

std::string WithSeparator(const std::string& root) {
  if (root.empty()) throw Failure("the folder's name is empty");
  return Utils::EndWith(root, "/") ? root : root + '/';
}

BackupFolder::BackupFolder(const std::string& root) : name_(root), root_(WithSeparator(root)) {
  // The trailing "/" follows a link: the user chose the root, so it may be one.
  const FileStatus status = StatusOf(root_);
  if (status.kind == FileKind::Absent) throw Failure(root + ": " + std::strerror(status.error));
  two_level_ = FindManifest("Manifest.db");
  if (!two_level_ && !FindManifest("Manifest.mbdb")) {
    throw Failure(root_ + ": holds no backup, neither Manifest.db nor Manifest.mbdb exists");
  }
}

// Whether the manifest `name` exists. Throws Failure when it must not be opened.
bool BackupFolder::FindManifest(const char* name) {
  manifest_ = PathOf(name);
  const FileStatus status = StatusOf(manifest_);
  if (status.kind == FileKind::Absent && status.error == ENOENT) return false;
  if (status.kind == FileKind::Absent) throw Failure(manifest_ + ": " + std::strerror(status.error));
  if (status.kind == FileKind::Link) throw Failure(manifest_ + ": is a symbolic link, which is not followed");
  if (status.kind != FileKind::Regular) throw Failure(manifest_ + ": is not a regular file");
  if (status.size == 0) throw Failure(manifest_ + ": is empty");
  return true;
}

std::string BackupFolder::PathOf(const char* name) const {
  return AdoptText(Utils::ConcatFilePath(root_.c_str(), name));
}

std::string BackupFolder::StoredPath(const std::string& id) const {
  return Utils::ConcatBackupFilePath(root_.c_str(), id.c_str(), two_level_, false);
}

std::optional<std::uint64_t> BackupFolder::StoredSize(const std::string& path) {
  if (two_level_ && !IsFolder(path.substr(0, path.rfind('/')))) return std::nullopt;
  const FileStatus status = StatusOf(path);
  if (status.kind != FileKind::Regular) return std::nullopt;
  return status.size;
}

bool BackupFolder::IsFolder(const std::string& path) {
  const auto [place, is_new] = folders_.try_emplace(path, false);
  if (is_new) place->second = StatusOf(path).kind == FileKind::Folder;
  return place->second;
}
