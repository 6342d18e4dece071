// Small fields: phone numbers, colour codes, numbers that may be missing.
//
//   Utils::IsPhoneFormat("555-0100", '-')        // true
//   Utils::ColorHexToRGB("#FF8000")              // {255, 128, 0}
//   Utils::GetZeroIntIsNull(nullptr)             // 0

#pragma once

#include <cstdint>
#include <string>

#include "common/export.h"

// A colour's components, 0 to 255 each when the code was well formed.
struct RgbColor {
  std::int32_t red;    // the first pair of digits
  std::int32_t green;  // the second
  std::int32_t blue;   // the third
};

namespace Utils {

// Whether `text` holds nothing but the digits 0 to 9 and `separator`; the empty text does. Null: false.
HOSTUTIL_EXPORT bool IsPhoneFormat(const char* text, char separator);

// Whether `code` is none of 0 to 9 # * + , and ; (codes beyond a byte are none of them).
HOSTUTIL_EXPORT bool isNotPhoneNumberChar(int code);

// The components of a colour code of six characters, behind "#" or not; all zero for null and for any other
// length. Each pair is read as std::stoi(pair, nullptr, 16) reads it: "1z" is 1 and "-f" is -15. Throws
// std::invalid_argument when a pair begins with no hexadecimal digit.
HOSTUTIL_EXPORT RgbColor ColorHexToRGB(const char* code);

// The number at the start of `text` as std::atoi and std::atol read it, 0 when there is none; null: 0. What
// lies outside the type's range has no defined result.
HOSTUTIL_EXPORT int GetZeroIntIsNull(const char* text);
HOSTUTIL_EXPORT long GetZeroLongIsNull(const char* text);

// Always empty; a place kept for hosts that link against it. Reads neither argument.
HOSTUTIL_EXPORT std::string Base64Decode(const char* encoded, std::uint32_t length);

}  // namespace Utils
