// A backup's folder: its layout, and where it stores files. The folder is not trusted: below the root no
// symbolic link is followed and only regular files are read, so nothing outside is opened and no pipe or
// device blocks. Concurrent changes to the folder are not guarded against.

#pragma once

#include <dirent.h>

#include <string>
#include <unordered_map>

#include "common/owners.h"
#include "file_status.h"

class BackupFolder {
 public:
  // Throws Failure when `root` is not a readable folder with a manifest: Manifest.db (two-level layout), else
  // Manifest.mbdb (flat).
  explicit BackupFolder(const std::string& root);

  const std::string& Root() const { return name_; }  // as the user named it
  bool TwoLevel() const { return two_level_; }
  const std::string& ManifestPath() const { return manifest_; }

  // The path of a file directly below the root.
  std::string PathOf(const char* name) const;

  // Where the file with this computed identifier is stored.
  std::string StoredPath(const std::string& id) const;

 private:
  friend class StoredFiles;

  bool FindManifest(const char* name);

  std::string name_;
  std::string root_;  // ends with "/"
  Owners::Owner<DIR, ::closedir> directory_;
  std::string manifest_;
  bool two_level_;
};

// Looks at stored files, relative to the root's descriptor. For one thread: it remembers the folders of the
// two-level layout.
//
//   StoredFiles files(folder);
//   if (files.StatusOf(path).kind == FileKind::Regular && files.MayRead(path)) ...
class StoredFiles {
 public:
  // `folder` must outlive this.
  explicit StoredFiles(const BackupFolder& folder);

  // The status of the file at `path`, a result of StoredPath. Absent or Unreadable when its folder is.
  FileStatus StatusOf(const std::string& path);

  // Whether this process may open the regular file at `path`, a result of StoredPath, to read it.
  bool MayRead(const std::string& path) const;

 private:
  const char* NameOf(const std::string& path) const { return path.c_str() + folder_.root_.size(); }

  const BackupFolder& folder_;
  int descriptor_;                                       // of the root
  std::unordered_map<std::string, FileStatus> parents_;  // at most 256, by name
};

// `root` with a "/" at its end. Throws Failure when it is empty, which would name the system's root.
std::string WithSeparator(const std::string& root);
