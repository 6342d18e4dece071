// A file service with one file in memory, which every path names: for functions that read files.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "common/basic/basic_services.h"

class MemoryFileService final : public IBasUtilityFile {
 public:
  // Does not copy: `bytes` must stay valid until the next call.
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
