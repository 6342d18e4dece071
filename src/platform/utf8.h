// Internal. UTF-8 validation.

#pragma once

#include <cstddef>
#include <string_view>

namespace Utf8 {

// The length of the well-formed sequence at the start of `text`; 0 when there is none or `text` is empty.
inline std::size_t SequenceLength(std::string_view text) {
  const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  if (text.empty()) return 0;
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (text.size() < length) return 0;
  for (std::size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool surrogate = lead == 0xED && byte(1) >= 0xA0;
  const bool too_large = lead == 0xF4 && byte(1) >= 0x90;
  return overlong || surrogate || too_large ? 0 : length;
}

}  // namespace Utf8
