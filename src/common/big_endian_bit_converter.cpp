#include "common/big_endian_bit_converter.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "common/basic/basic_services.h"

namespace {

std::uint16_t Reversed(std::uint16_t value) {
  return __builtin_bswap16(value);
}

std::uint32_t Reversed(std::uint32_t value) {
  return __builtin_bswap32(value);
}

std::uint64_t Reversed(std::uint64_t value) {
  return __builtin_bswap64(value);
}

template <typename Integer>
Integer Decode(const unsigned char* buffer, std::int32_t index) {
  const bool little_endian = BasUtilitySys()->IsLittleEndian();
  std::make_unsigned_t<Integer> bits;
  std::memcpy(&bits, buffer + index, sizeof bits);
  return static_cast<Integer>(little_endian ? Reversed(bits) : bits);
}

}  // namespace

unsigned char* BigEndianBitConverter::ReverseBytes(const unsigned char* buffer, std::int32_t start,
                                                   std::int32_t count) {
  if (count < 0) return nullptr;
  const auto length = static_cast<std::size_t>(count);
  auto* const block = static_cast<unsigned char*>(std::malloc(length));
  if (block == nullptr || length == 0) return block;

  // Eight bytes at a time: several times as fast as single ones.
  const unsigned char* read = buffer + start;
  unsigned char* write = block + length;
  std::uint64_t eight;
  for (; write - block >= static_cast<std::ptrdiff_t>(sizeof eight); read += sizeof eight) {
    std::memcpy(&eight, read, sizeof eight);
    eight = Reversed(eight);
    write -= sizeof eight;
    std::memcpy(write, &eight, sizeof eight);
  }
  while (write != block) *--write = *read++;
  return block;
}

std::int16_t BigEndianBitConverter::ToInt16(const unsigned char* buffer, std::int32_t index) {
  return Decode<std::int16_t>(buffer, index);
}

std::uint16_t BigEndianBitConverter::ToUInt16(const unsigned char* buffer, std::int32_t index) {
  return Decode<std::uint16_t>(buffer, index);
}

std::int32_t BigEndianBitConverter::ToInt32(const unsigned char* buffer, std::int32_t index) {
  return Decode<std::int32_t>(buffer, index);
}

std::uint32_t BigEndianBitConverter::ToUInt32(const unsigned char* buffer, std::int32_t index) {
  return Decode<std::uint32_t>(buffer, index);
}

std::int64_t BigEndianBitConverter::ToInt64(const unsigned char* buffer, std::int32_t index) {
  return Decode<std::int64_t>(buffer, index);
}
