// Helpers of the fuzz targets: texts in blocks of their exact size, and a check that is a finding when it
// fails.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace Fuzz {

// Aborts unless `holds`; libFuzzer then saves the input.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "check failed: %s\n", what);
  std::abort();
}

// A copy in a block that ends with its NUL, so that the address sanitizer finds a read of one byte past it.
class Text {
 public:
  explicit Text(std::string_view bytes) : bytes_(bytes.begin(), bytes.end()) {
    bytes_.push_back('\0');
    bytes_.shrink_to_fit();
  }
  const char* c_str() const { return bytes_.data(); }

 private:
  std::vector<char> bytes_;
};

// Removes the first line of `rest`, with its newline, and returns it.
inline std::string_view TakeLine(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return line;
}

inline std::string_view Input(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace Fuzz
