#include "common/big_endian_bit_converter.h"

#include <bit>
#include <numeric>

#include "support/services.h"
#include "support/testing.h"

namespace {

using namespace BigEndianBitConverter;

struct FakeSys final : IBasUtilitySys {
  explicit FakeSys(bool little) : little_endian(little) {}
  bool IsLittleEndian() override { return little_endian; }
  bool little_endian;
};

using Numbers = std::tuple<std::int16_t, std::uint16_t, std::int32_t, std::uint32_t, std::int64_t>;

Numbers DecodeAt(std::int32_t at) {
  constexpr unsigned char b[] = {0x12, 0x34, 0x56, 0x78, 0x1A, 0, 0, 1, 9, 0xFF, 0xFE, 0, 0,
                                 0,    0,    0,    0,    0x80, 0, 0, 0, 0, 0,    0,    0};
  return {ToInt16(b, at), ToUInt16(b, at), ToInt32(b, at), ToUInt32(b, at), ToInt64(b, at)};
}

TEST(BigEndianBitConverter, DecodesAtAnyIndex) {
  EXPECT_EQ(DecodeAt(0), Numbers(0x1234, 0x1234, 0x12345678, 0x12345678, 0x123456781A000001));
  EXPECT_EQ(DecodeAt(9), Numbers(-2, 65534, -131072, 0xFFFE0000, -0x2000000000000));
  EXPECT_EQ(DecodeAt(17), Numbers(-32768, 32768, INT32_MIN, 0x80000000, INT64_MIN));
}

TEST(BigEndianBitConverter, ReversesAsTheServiceSays) {
  const Numbers right(0x3456, 0x3456, 0x3456781A, 0x3456781A, 0x3456781A00000109);
  const Numbers reversed(0x5634, 0x5634, 0x1A785634, 0x1A785634, 0x090100001A785634);
  for (const bool little : {false, true}) {
    FakeSys sys(little);
    const ServiceOverride<IBasUtilitySys> in_place(&sys);
    EXPECT_EQ(DecodeAt(1), little == (std::endian::native == std::endian::little) ? right : reversed);
    EXPECT_EQ(in_place.AccessorCalls(), 5);
  }
}

TEST(ReverseBytes, ReversesACopy) {
  std::vector<unsigned char> buffer(300);
  std::iota(buffer.begin(), buffer.end(), static_cast<unsigned char>(1));
  for (const std::int32_t count : {0, 1, 7, 8, 9, 15, 16, 17, 64, 255}) {
    const std::unique_ptr<unsigned char, void (*)(void*)> block(ReverseBytes(buffer.data(), 7, count),
                                                                &std::free);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(std::equal(block.get(), block.get() + count, buffer.rend() - 7 - count)) << count;
  }
  EXPECT_EQ(ReverseBytes(buffer.data(), 0, -1), nullptr);
}

}  // namespace
