// A folder of its own for a test, gone with it, and the few file operations that tests need.

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // The path of `name` inside the folder.
  std::string Path(std::string_view name = "") const { return (path_ / name).string(); }

  // Writes a file, its folders included, and returns its path.
  std::string Write(std::string_view name, std::string_view contents) const;

 private:
  std::filesystem::path path_;
};

// The contents of a file; fails the test when it cannot be read.
std::string ReadFile(const std::string& path);
