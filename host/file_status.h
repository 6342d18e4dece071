// The kind and size of a file, without following a symbolic link.

#pragma once

#include <cstdint>
#include <string>

enum class FileKind { Absent, Regular, Folder, Link, Other };

struct FileStatus {
  FileKind kind;
  std::uint64_t size;
  int error;  // errno when absent, else 0
};

// Throws Failure when it is unknown whether there is a file: no permission, or an I/O error.
FileStatus StatusOf(const std::string& path);
