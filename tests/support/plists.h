// Property lists that tests write byte by byte.

#pragma once

#include "common/libplist.h"
#include "support/testing.h"

inline std::string BigEndian(std::uint64_t value, std::size_t size) {
  std::string bytes;
  while (size-- > 0) bytes += static_cast<char>(value >> (8 * size));
  return bytes;
}

inline std::string BinaryList(const std::vector<std::string>& objects, std::size_t reference_size = 1,
                              std::uint64_t root = 0) {
  std::string bytes = "bplist00", table;
  for (const std::string& object : objects) {
    table += BigEndian(bytes.size(), 3);
    bytes += object;
  }
  return bytes + table + BigEndian(3, 7) + BigEndian(reference_size, 1) + BigEndian(objects.size(), 8) +
         BigEndian(root, 8) + BigEndian(bytes.size(), 8);
}
