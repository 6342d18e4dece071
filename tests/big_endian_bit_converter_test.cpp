#include "common/big_endian_bit_converter.h"

#include <bit>
#include <numeric>

#include "support/services.h"
#include "support/testing.h"

namespace {

using namespace BigEndianBitConverter;

struct FakeSys final : IBasUtilitySys {
  bool IsLittleEndian() override { return little_endian; }
  bool little_endian = false;
};

struct Decoded {
  std::int16_t int16;
  std::uint16_t uint16;
  std::int32_t int32;
  std::uint32_t uint32;
  std::int64_t int64;
};

void ExpectDecoded(const unsigned char* bytes, std::int32_t index, const Decoded& expected) {
  SCOPED_TRACE(index);
  EXPECT_EQ(ToInt16(bytes, index), expected.int16);
  EXPECT_EQ(ToUInt16(bytes, index), expected.uint16);
  EXPECT_EQ(ToInt32(bytes, index), expected.int32);
  EXPECT_EQ(ToUInt32(bytes, index), expected.uint32);
  EXPECT_EQ(ToInt64(bytes, index), expected.int64);
}

constexpr unsigned char kBytes[] = {0x12, 0x34, 0x56, 0x78, 0x1A, 0, 0, 1, 9, 0xFF, 0xFE, 0, 0,
                                    0,    0,    0,    0,    0x80, 0, 0, 0, 0, 0,    0,    0};

TEST(BigEndianBitConverter, DecodesAtAnyIndex) {
  ExpectDecoded(kBytes, 0, {0x1234, 0x1234, 0x12345678, 0x12345678, 0x123456781A000001});
  ExpectDecoded(kBytes, 9, {-2, 65534, -131072, 0xFFFE0000, -0x2000000000000});
  ExpectDecoded(kBytes, 17, {-32768, 32768, INT32_MIN, 0x80000000, INT64_MIN});
}

TEST(BigEndianBitConverter, ReversesAsTheServiceSays) {
  for (const bool little : {false, true}) {
    FakeSys sys;
    sys.little_endian = little;
    const ServiceOverride<IBasUtilitySys> in_place(&sys);
    if (little == (std::endian::native == std::endian::little)) {
      ExpectDecoded(kBytes, 1, {0x3456, 0x3456, 0x3456781A, 0x3456781A, 0x3456781A00000109});
    } else {
      ExpectDecoded(kBytes, 1, {0x5634, 0x5634, 0x1A785634, 0x1A785634, 0x090100001A785634});
    }
    EXPECT_EQ(in_place.AccessorCalls(), 5);
  }
}

TEST(ReverseBytes, ReversesACopy) {
  std::vector<unsigned char> buffer(300);
  std::iota(buffer.begin(), buffer.end(), static_cast<unsigned char>(1));
  for (const std::int32_t count : {0, 1, 7, 8, 9, 15, 16, 17, 64, 255}) {
    const std::unique_ptr<unsigned char, decltype(&std::free)> block(ReverseBytes(buffer.data(), 7, count),
                                                                     &std::free);
    ASSERT_NE(block, nullptr);
    const std::vector<unsigned char> reversed(block.get(), block.get() + count);
    EXPECT_EQ(reversed, std::vector(buffer.rend() - 7 - count, buffer.rend() - 7));
  }
  EXPECT_EQ(ReverseBytes(buffer.data(), 0, -1), nullptr);
}

}  // namespace
