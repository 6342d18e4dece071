// A file service whose only file is a piece of memory: every path names it. For targets that feed bytes to
// functions which read files.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "common/basic/basic_services.h"

class MemoryFileService final : public IBasUtilityFile {
 public:
  // The bytes stay the caller's and must live until the next call of this.
  void SetContents(const std::uint8_t* bytes, std::size_t size) {
    bytes_ = bytes;
    size_ = size;
  }

  void CreateDirectory(const char* /*path*/) override {}
  std::uint64_t GetFileSize(const char* /*path*/) override { return size_; }
  std::FILE* OpenFile(const char* /*path*/, const char* /*mode*/) override {
    // Opened for reading only, so nothing is written through the pointer.
    return size_ == 0 ? nullptr : ::fmemopen(const_cast<std::uint8_t*>(bytes_), size_, "rb");
  }

 private:
  const std::uint8_t* bytes_ = nullptr;
  std::size_t size_ = 0;
};
