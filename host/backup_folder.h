// A backup's folder: its layout, and where it stores files. The folder is not trusted: below the root no
// symbolic link is followed and only regular files are read, so nothing outside is opened and no pipe or
// device blocks. Concurrent changes to the folder are not guarded against.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

class BackupFolder {
 public:
  // Throws Failure when `root` is not a folder with a manifest: Manifest.db (two-level layout), else
  // Manifest.mbdb (flat).
  explicit BackupFolder(const std::string& root);

  const std::string& Root() const { return name_; }  // as the user named it
  bool TwoLevel() const { return two_level_; }
  const std::string& ManifestPath() const { return manifest_; }

  // The path of a file directly below the root.
  std::string PathOf(const char* name) const;

  // Where the file with this computed identifier is stored.
  std::string StoredPath(const std::string& id) const;

  // The size of the regular file at `path`, a result of StoredPath; none when there is no such file.
  std::optional<std::uint64_t> StoredSize(const std::string& path);

 private:
  bool FindManifest(const char* name);
  bool IsFolder(const std::string& path);

  std::string name_;
  std::string root_;  // ends with "/"
  std::string manifest_;
  bool two_level_;
  std::unordered_map<std::string, bool> folders_;  // cache of IsFolder, at most 256 in the two-level layout
};

// `root` with a "/" at its end. Throws Failure when it is empty, which would name the system's root.
std::string WithSeparator(const std::string& root);
