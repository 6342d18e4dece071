#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::string name = (fs::temp_directory_path() / "hostutil-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "cannot make " << name;
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::Write(std::string_view name, std::string_view contents) const {
  const fs::path path = path_ / name;
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << contents;
  return path.string();
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}
