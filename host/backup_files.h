// The files of a backup folder, which is not trusted: below the root no symbolic link is followed, and only
// regular files count, so that nothing outside is opened and no pipe or device blocks. A backup that somebody
// changes while it is being read is not guarded against.

#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

struct FreePlist {
  using pointer = plist_t;
  void operator()(plist_t node) const { plist_free(node); }
};
using Plist = std::unique_ptr<plist_t, FreePlist>;

// What stands at a path, itself and not what it may point to. Throws Failure when that cannot be told, for
// want of permission or by an error of the disk: only what is known to be absent counts as absent.
enum class FileKind { Absent, Regular, Folder, Link, Other };
struct FileStatus {
  FileKind kind;
  std::uint64_t size;
  int error;  // why it counts as absent
};
FileStatus StatusOf(const std::string& path);

// A backup's folder. `root` is kept with a "/" at its end, as the library's functions want it.
class BackupFolder {
 public:
  // Throws Failure when `root` is no folder.
  explicit BackupFolder(const std::string& root);

  std::string PathOf(const char* name) const;

  // Where the file with this computed identifier is stored.
  std::string StoredPath(const std::string& id, bool two_level) const;

  // The size of the stored file at a path that StoredPath gave; none when no regular file stands there.
  std::optional<std::uint64_t> StoredSize(const std::string& path, bool two_level);

 private:
  bool IsFolder(const std::string& path);

  std::string root_;
  std::unordered_map<std::string, bool>
      folders_;  // those looked at already, 256 of them in the two-level layout
};

// A property list of a backup, whose path was found to be a regular file of this size. Null when it does not
// parse or is too large to be one: reading one takes memory of several times its size. Throws Failure when it
// cannot be opened.
Plist ReadBackupPlist(const std::string& path, std::uint64_t size);

// `root` with a "/" at its end. Throws Failure when it is empty, which would name the system's root.
std::string WithSeparator(const std::string& root);
