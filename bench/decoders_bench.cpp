// Big-endian integers and reversed copies.

#include <algorithm>
#include <cstdint>

#include "bench.h"
#include "common/big_endian_bit_converter.h"

template <typename Integer>
Integer DecodeByPeer(const unsigned char* buffer, std::int32_t index);  // decode_peer.cpp

namespace {

template <typename Integer>
void BenchDecoder(const std::string& function, Integer (*decode)(const unsigned char*, std::int32_t)) {
  static constexpr std::int32_t kUnaligned = 3;
  static const std::string text = RandomBytes(32);
  static const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
  Compare(
      function + "/unaligned", "1.1", [=] { return decode(bytes, kUnaligned); },
      Peer{"the same in a shared library", [] { return DecodeByPeer<Integer>(bytes, kUnaligned); }});
}

void BenchReverseBytes(std::size_t size, const char* goal) {
  const std::string text = Repeated(EnglishText(kKiB), size - 1) + '.';
  const auto ours = [=] {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    auto* const copy = BigEndianBitConverter::ReverseBytes(bytes, 0, static_cast<std::int32_t>(size));
    return Own(reinterpret_cast<char*>(copy), size);
  };
  Compare("ReverseBytes/" + SizeName(size), goal, ours,
          Peer{"std::reverse_copy", [=] {
                 Text copy = Own(static_cast<char*>(std::malloc(size)), size);
                 std::reverse_copy(text.begin(), text.end(), copy.block.get());
                 return copy;
               }});
}

}  // namespace

void RegisterDecoders() {
  BenchDecoder("ToInt16", BigEndianBitConverter::ToInt16);
  BenchDecoder("ToUInt16", BigEndianBitConverter::ToUInt16);
  BenchDecoder("ToInt32", BigEndianBitConverter::ToInt32);
  BenchDecoder("ToUInt32", BigEndianBitConverter::ToUInt32);
  BenchDecoder("ToInt64", BigEndianBitConverter::ToInt64);
  BenchReverseBytes(8, kCallGoal);
  BenchReverseBytes(100, kCallGoal);
  BenchReverseBytes(64 * kKiB, kAheadGoal);
}
