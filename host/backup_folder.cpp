#include "backup_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "common/utils.h"
#include "failure.h"
#include "owners.h"

std::string WithSeparator(const std::string& root) {
  if (root.empty()) throw Failure("the folder's name is empty");
  return Utils::EndWith(root, "/") ? root : root + '/';
}

// The trailing "/" follows a link: the user chose the root, so it may be one.
BackupFolder::BackupFolder(const std::string& root)
    : name_(root), root_(WithSeparator(root)), directory_(::opendir(root_.c_str())) {
  if (directory_ == nullptr) throw Failure(root + ": " + std::strerror(errno));
  two_level_ = FindManifest("Manifest.db");
  if (!two_level_ && !FindManifest("Manifest.mbdb")) {
    throw Failure(root + ": is not a backup: it has neither Manifest.db nor Manifest.mbdb");
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

StoredFiles::StoredFiles(const BackupFolder& folder)
    : folder_(folder), descriptor_(::dirfd(folder.directory_.get())) {
}

FileStatus StoredFiles::StatusOf(const std::string& path) {
  const std::string_view name = NameOf(path);
  if (folder_.two_level_) {
    const auto [place, is_new] = parents_.try_emplace(std::string(name.substr(0, name.rfind('/'))));
    FileStatus& parent = place->second;
    if (is_new) parent = StatusAt(descriptor_, place->first.c_str());
    if (parent.kind == FileKind::Unreadable) return parent;
    if (parent.kind != FileKind::Folder) return {FileKind::Absent, 0, ENOENT};
  }
  return StatusAt(descriptor_, name.data());
}

bool StoredFiles::MayRead(const std::string& path) const {
  return ::faccessat(descriptor_, NameOf(path), R_OK, 0) == 0;
}
