// What the fuzz targets share: texts in blocks of their exact size, and a check that counts as a finding.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace Fuzz {

// Ends the process, which the fuzzer keeps the input of, when `holds` is false.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s\n", what);
  std::abort();
}

// A copy whose block ends with its NUL, so that the address sanitizer sees a read of even one byte beyond.
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

// The first line of `rest`, which is taken off it together with its newline.
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
