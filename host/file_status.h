// The kind and size of a file, without following a symbolic link.

#pragma once

#include <cstdint>
#include <string>

enum class FileKind {
  Absent,
  Unreadable,  // whether there is a file is unknown: no permission, or an I/O error
  Regular,
  Folder,
  Link,
  Other,
};

struct FileStatus {
  FileKind kind;
  std::uint64_t size;
  int error;  // errno when absent or unreadable, else 0
};

// The status of the file at `path`, which is relative to the open folder with the descriptor `folder`.
FileStatus StatusAt(int folder, const char* path);

// The same for a path of its own. Throws Failure when it is unreadable.
FileStatus StatusOf(const std::string& path);
