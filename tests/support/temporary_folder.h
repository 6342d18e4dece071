// A temporary folder that is removed at the end of a test, and the file operations that tests need.

#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "support/testing.h"

class TemporaryFolder {
 public:
  TemporaryFolder() : path_(std::filesystem::temp_directory_path() / "hostutil-XXXXXX") {
    std::string name = path_.string();
    if (::mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "cannot make " << name;
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // The path of `name` inside the folder.
  std::string Path(std::string_view name = "") const { return (path_ / name).string(); }

  // Writes a file, its folders included, and returns its path.
  std::string Write(std::string_view name, std::string_view contents) const {
    const std::filesystem::path path = path_ / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << contents;
    return path.string();
  }

 private:
  std::filesystem::path path_;
};

// The contents of a file; fails the test when it cannot be read.
inline std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}
