// Small fields: phone numbers, colour codes, numbers that may be missing.
//
//   Utils::IsPhoneFormat("555-0100", '-')        // true
//   Utils::ColorHexToRGB("#FF8000")              // {255, 128, 0}
//   Utils::GetZeroIntIsNull(nullptr)             // 0

#pragma once

#include <cstdint>
#include <string>

#include "common/export.h"

// A colour's components: 0 to 255 each if the code is well formed.
struct RgbColor {
  std::int32_t red;    // the first two digits
  std::int32_t green;  // the middle two
  std::int32_t blue;   // the last two
};

namespace Utils {

// Whether every character of `text` is a digit 0 to 9 or `separator`; true for the empty text. Null: false.
HOSTUTIL_EXPORT bool IsPhoneFormat(const char* text, char separator);

// Whether `code` is none of 0 to 9 # * + , and ; (no code beyond a byte is one of them).
HOSTUTIL_EXPORT bool isNotPhoneNumberChar(int code);

// The components of a colour code of six characters, with or without "#" before them; all zero for null and
// for any other length. Each pair is read as std::stoi(pair, nullptr, 16) reads it: "1z" is 1, "-f" is -15
// and " 7" is 7. Throws std::invalid_argument for a pair without a digit to read there: "GG", "#1", "--".
HOSTUTIL_EXPORT RgbColor ColorHexToRGB(const char* code);

// The number at the start of `text` as std::atoi and std::atol read it, 0 when there is none. Null: 0. The
// result for a number outside the type's range is undefined.
HOSTUTIL_EXPORT int GetZeroIntIsNull(const char* text);
HOSTUTIL_EXPORT long GetZeroLongIsNull(const char* text);

// Always empty; kept for hosts that link against it. Reads neither argument.
HOSTUTIL_EXPORT std::string Base64Decode(const char* encoded, std::uint32_t length);

}  // namespace Utils
