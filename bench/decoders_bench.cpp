// Big-endian integers and reversed copies.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "common/basic/basic_services.h"
#include "common/big_endian_bit_converter.h"
#include "comparison.h"
#include "sample_data.h"

namespace {

using Bytes = std::unique_ptr<unsigned char, FreeBlock>;

// What the decoders promise to do and no more: ask the service, load, reverse.
template <typename Integer, int kIndex>
Integer DecodeByHand(const unsigned char* buffer) {
  const bool little_endian = BasUtilitySys()->IsLittleEndian();
  Integer value;
  std::memcpy(&value, buffer + kIndex, sizeof value);
  if (!little_endian) return value;
  if constexpr (sizeof value == 2)
    return static_cast<Integer>(__builtin_bswap16(static_cast<std::uint16_t>(value)));
  if constexpr (sizeof value == 4)
    return static_cast<Integer>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
  if constexpr (sizeof value == 8)
    return static_cast<Integer>(__builtin_bswap64(static_cast<std::uint64_t>(value)));
}

template <typename Integer>
void CompareDecoder(const char* function, Integer (*decode)(const unsigned char*, std::int32_t)) {
  static constexpr int kIndex = 3;
  static const unsigned char* volatile buffer =
      reinterpret_cast<const unsigned char*>(Kept(RandomBytes(16)).data());
  Compare(function, "at an odd index", {1.10, 0})
      .Ours([decode] { return decode(buffer, kIndex); })
      .Peer("floor: the service's answer and a load", [] { return DecodeByHand<Integer, kIndex>(buffer); })
      .Remark(
          "the call into this library stands beside the two calls that the floor makes, and nothing else "
          "does");
}

void CompareReverseBytes(std::size_t size, Goal goal) {
  const std::string& data = Kept(RandomBytes(size));
  const auto* const bytes = reinterpret_cast<const unsigned char*>(data.data());
  const auto describe = [size](const auto& job) {
    const Bytes answer = job();
    return std::string(reinterpret_cast<const char*>(answer.get()), size);
  };
  Compare("ReverseBytes", SizeName(size), goal)
      .Ours(
          [=] {
            return Bytes(BigEndianBitConverter::ReverseBytes(bytes, 0, static_cast<std::int32_t>(size)));
          },
          describe)
      .Peer(
          "std::reverse_copy",
          [=] {
            Bytes copy(static_cast<unsigned char*>(std::malloc(size)));
            std::reverse_copy(bytes, bytes + size, copy.get());
            return copy;
          },
          describe);
}

}  // namespace

void CompareDecoders() {
  CompareDecoder("ToInt16", BigEndianBitConverter::ToInt16);
  CompareDecoder("ToUInt16", BigEndianBitConverter::ToUInt16);
  CompareDecoder("ToInt32", BigEndianBitConverter::ToInt32);
  CompareDecoder("ToUInt32", BigEndianBitConverter::ToUInt32);
  CompareDecoder("ToInt64", BigEndianBitConverter::ToInt64);
  CompareReverseBytes(8, kLevel);
  CompareReverseBytes(100, kLevel);
  CompareReverseBytes(kKiB, kWellAhead);
  CompareReverseBytes(64 * kKiB, kWellAhead);
}
