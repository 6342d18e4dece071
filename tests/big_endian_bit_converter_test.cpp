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

using Values = std::vector<std::int64_t>;

Values Decoded(const unsigned char* bytes, std::int32_t index) {
  return {ToInt16(bytes, index), ToUInt16(bytes, index), ToInt32(bytes, index), ToUInt32(bytes, index),
          ToInt64(bytes, index)};
}

TEST(BigEndianBitConverter, DecodesAtAnyIndexInTheByteOrderThatTheServiceTells) {
  const unsigned char bytes[] = {0x12, 0x34, 0x56, 0x78, 0x1A, 0, 0, 1, 9, 0xFF, 0xFE, 0, 0,
                                 0,    0,    0,    0,    0x80, 0, 0, 0, 0, 0,    0,    0};
  EXPECT_EQ(Decoded(bytes, 0), (Values{0x1234, 0x1234, 0x12345678, 0x12345678, 0x123456781A000001}));
  EXPECT_EQ(Decoded(bytes, 9), (Values{-2, 65534, -131072, 0xFFFE0000, -0x2000000000000}));
  EXPECT_EQ(Decoded(bytes, 17), (Values{-32768, 32768, -2147483648LL, 0x80000000, INT64_MIN}));
  for (const bool little : {false, true}) {
    FakeSys sys;
    sys.little_endian = little;
    const ServiceOverride<IBasUtilitySys> in_place(&sys);
    const bool reversed = little != (std::endian::native == std::endian::little);
    EXPECT_EQ(Decoded(bytes, 1),
              (reversed ? Values{0x5634, 0x5634, 0x1A785634, 0x1A785634, 0x090100001A785634}
                        : Values{0x3456, 0x3456, 0x3456781A, 0x3456781A, 0x3456781A00000109}));
    EXPECT_EQ(in_place.AccessorCalls(), 5);
  }
}

TEST(BigEndianBitConverter, ReversesACopy) {
  std::vector<unsigned char> buffer(300);
  std::iota(buffer.begin(), buffer.end(), static_cast<unsigned char>(1));
  for (const std::int32_t count : {0, 1, 7, 8, 9, 15, 16, 17, 64, 255}) {
    unsigned char* const block = ReverseBytes(buffer.data(), 7, count);
    EXPECT_TRUE(block != nullptr && std::equal(block, block + count, buffer.rend() - 7 - count)) << count;
    std::free(block);
  }
  EXPECT_EQ(ReverseBytes(buffer.data(), 0, -1), nullptr);
}

}  // namespace
