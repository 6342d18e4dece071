// What the decoders promise and no more, in a shared library of its own, so that the call into one counts on
// both sides: ask the service, load, reverse.

#include <bit>
#include <cstdint>
#include <cstring>

#include "common/basic/basic_services.h"

template <typename Integer>
Integer DecodeByPeer(const unsigned char* buffer, std::int32_t index) {
  const bool little_endian = BasUtilitySys()->IsLittleEndian();
  Integer value;
  std::memcpy(&value, buffer + index, sizeof value);
  if (!little_endian) return value;
  if constexpr (sizeof value == 2)
    return std::bit_cast<Integer>(__builtin_bswap16(std::bit_cast<std::uint16_t>(value)));
  if constexpr (sizeof value == 4)
    return std::bit_cast<Integer>(__builtin_bswap32(std::bit_cast<std::uint32_t>(value)));
  if constexpr (sizeof value == 8)
    return std::bit_cast<Integer>(__builtin_bswap64(std::bit_cast<std::uint64_t>(value)));
}

template std::int16_t DecodeByPeer(const unsigned char*, std::int32_t);
template std::uint16_t DecodeByPeer(const unsigned char*, std::int32_t);
template std::int32_t DecodeByPeer(const unsigned char*, std::int32_t);
template std::uint32_t DecodeByPeer(const unsigned char*, std::int32_t);
template std::int64_t DecodeByPeer(const unsigned char*, std::int32_t);
