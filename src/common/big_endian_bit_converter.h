// Integers stored most significant byte first, read at any position of a byte buffer on a machine of either
// byte order.
//
//   const unsigned char bytes[] = {0x00, 0x12, 0x34};
//   BigEndianBitConverter::ToUInt16(bytes, 1)  // 0x1234
//
// No argument is tested and no length is known here: every byte that a call reads must lie in the caller's
// buffer, and index + width must fit an int32. Alignment does not matter. Each decode asks the host's system
// service for its byte order once and otherwise costs a load.

#pragma once

#include <cstdint>

#include "common/export.h"

namespace BigEndianBitConverter {

// A new block of `count` bytes that holds buffer[start .. start + count) backwards; the caller frees it. Zero
// gives an empty block, still to be freed; a negative count, or no memory, gives null. The buffer is not
// changed.
HOSTUTIL_EXPORT unsigned char* ReverseBytes(const unsigned char* buffer, std::int32_t start,
                                            std::int32_t count);

// The 2, 4 or 8 bytes from buffer[index] on.
HOSTUTIL_EXPORT std::int16_t ToInt16(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::uint16_t ToUInt16(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::int32_t ToInt32(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::uint32_t ToUInt32(const unsigned char* buffer, std::int32_t index);
HOSTUTIL_EXPORT std::int64_t ToInt64(const unsigned char* buffer, std::int32_t index);

}  // namespace BigEndianBitConverter
