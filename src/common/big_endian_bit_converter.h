// Decoding big-endian integers at any position of a byte buffer, on machines of either byte order.
//
//   const unsigned char bytes[] = {0x00, 0x12, 0x34};
//   BigEndianBitConverter::ToUInt16(bytes, 1)  // 0x1234
//
// REQUIRES: every byte that a call reads lies in the caller's buffer, and index + width fits an int32.
// Nothing is checked. Alignment does not matter. Each decode asks the system service for the byte order once;
// the rest costs a load.

#pragma once

#include <cstdint>

#include "common/export.h"

namespace BigEndianBitConverter {

// The bytes buffer[start .. start + count) in reverse order, as a new block of `count` bytes that the caller
// frees. A count of 0 gives an empty block, still to be freed. Null for a negative count and when out of
// memory.
HOSTUTIL_EXPORT unsigned char* ReverseBytes(const unsigned char* buffer, std::int32_t start,
                                            std::int32_t count);

// The integer in the 2, 4 or 8 bytes from buffer[index] on.
HOSTUTIL_EXPORT std::int16_t ToInt16(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::uint16_t ToUInt16(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::int32_t ToInt32(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::uint32_t ToUInt32(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::int64_t ToInt64(const unsigned char* buffer, std::int32_t index);

}  // namespace BigEndianBitConverter
