// Big-endian integers and reversed copies.

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "bench.h"
#include "common/basic/basic_services.h"
#include "common/big_endian_bit_converter.h"

namespace {

// What the decoders promise and no more: ask the service, load, reverse.
template <typename Integer, auto reverse>
Integer DecodeByPeer(const unsigned char* buffer, std::int32_t index) {
  std::make_unsigned_t<Integer> bits;
  std::memcpy(&bits, buffer + index, sizeof bits);
  return static_cast<Integer>(BasUtilitySys()->IsLittleEndian() ? reverse(bits) : bits);
}

template <auto reverse, typename Integer>
void BenchDecoder(const std::string& function, Integer (*decode)(const unsigned char*, std::int32_t)) {
  static const std::string text = RandomBytes(32);
  const auto job = [](auto decoder) {
    return [=] { return decoder(reinterpret_cast<const unsigned char*>(text.data()), 3); };
  };
  Integer (*volatile peer)(const unsigned char*, std::int32_t) = DecodeByPeer<Integer, reverse>;
  // Read from a volatile pointer, as the address of a function in another library.
  Compare(function + "/unaligned", "1.1", job(decode), Peer{"the same through a pointer", job(+peer)});
}

void BenchReverseBytes(std::size_t size, const char* goal) {
  const std::string text = EnglishText(size);
  const auto ours = [=] {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    auto* const copy = BigEndianBitConverter::ReverseBytes(bytes, 0, static_cast<std::int32_t>(size));
    return Block(reinterpret_cast<char*>(copy));
  };
  const auto reverse_copy = [=] {
    Block copy(static_cast<char*>(std::malloc(size)));
    std::reverse_copy(text.begin(), text.end(), copy.get());
    return copy;
  };
  Compare("ReverseBytes/" + SizeName(size), goal, ours, Peer{"std::reverse_copy", reverse_copy});
}

const bool kRegistered = [] {
  constexpr auto reverse16 = [](std::uint16_t bits) { return __builtin_bswap16(bits); };
  constexpr auto reverse32 = [](std::uint32_t bits) { return __builtin_bswap32(bits); };
  constexpr auto reverse64 = [](std::uint64_t bits) { return __builtin_bswap64(bits); };
  BenchDecoder<reverse16>("ToInt16", BigEndianBitConverter::ToInt16);
  BenchDecoder<reverse16>("ToUInt16", BigEndianBitConverter::ToUInt16);
  BenchDecoder<reverse32>("ToInt32", BigEndianBitConverter::ToInt32);
  BenchDecoder<reverse32>("ToUInt32", BigEndianBitConverter::ToUInt32);
  BenchDecoder<reverse64>("ToInt64", BigEndianBitConverter::ToInt64);
  BenchReverseBytes(8, kCallGoal);
  BenchReverseBytes(100, kCallGoal);
  BenchReverseBytes(64 * kKiB, kAheadGoal);
  return true;
}();

}  // namespace
