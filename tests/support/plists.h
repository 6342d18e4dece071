// Property lists that tests write byte by byte, and trees as texts.

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

// The tree as `write` encodes it; empty for null.
inline std::string Encoded(plist_t root, decltype(&plist_to_xml) write = &plist_to_xml) {
  char* bytes = nullptr;
  std::uint32_t length = 0;
  if (root != nullptr) write(root, &bytes, &length);
  const Libplist::Text owner(bytes);
  return {bytes, length};
}
