#include "common/big_endian_bit_converter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

#include "support/services.h"

namespace {

using namespace BigEndianBitConverter;

class FakeSys final : public IBasUtilitySys {
 public:
  explicit FakeSys(bool little_endian) : little_endian_(little_endian) {}
  bool IsLittleEndian() override { return ++questions, little_endian_; }
  int questions = 0;

 private:
  bool little_endian_;
};

TEST(BigEndianBitConverter, DecodesAtAnyIndexWithTheMachinesOwnByteOrder) {
  const struct {
    std::vector<unsigned char> bytes;
    std::int32_t index;
    std::int64_t int16, uint16, int32, uint32, int64;
  } cases[] = {{{0x12, 0x34, 0x56, 0x78, 0x9A, 0, 0, 1},
                0,
                0x1234,
                0x1234,
                0x12345678,
                0x12345678,
                0x123456789A000001},
               {{9, 0xFF, 0xFE, 0, 0, 0, 0, 0, 0}, 1, -2, 65534, -131072, 0xFFFE0000, -0x2000000000000},
               {{9, 9, 0x80, 0, 0, 0, 0, 0, 0, 0}, 2, -32768, 32768, -2147483648LL, 0x80000000, INT64_MIN},
               {{9, 9, 9, 0, 0, 0xBE, 0xEF, 0, 0, 1, 0}, 3, 0, 0, 0xBEEF, 0xBEEF, 0xBEEF00000100}};
  for (const auto& c : cases) {
    const unsigned char* bytes = c.bytes.data();
    EXPECT_EQ(ToInt16(bytes, c.index), c.int16);
    EXPECT_EQ(ToUInt16(bytes, c.index), c.uint16);
    EXPECT_EQ(ToInt32(bytes, c.index), c.int32);
    EXPECT_EQ(ToUInt32(bytes, c.index), c.uint32);
    EXPECT_EQ(ToInt64(bytes, c.index), c.int64);
  }
}

TEST(BigEndianBitConverter, TakesTheServicesWordForTheByteOrder) {
  const unsigned char bytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
  for (const bool little : {false, true}) {
    FakeSys sys(little);
    const ServiceOverride<IBasUtilitySys> in_place(&sys);
    const bool reversed = little != (std::endian::native == std::endian::little);
    EXPECT_EQ(ToUInt16(bytes, 1), reversed ? 0x0201 : 0x0102);
    EXPECT_EQ(ToInt16(bytes, 1), reversed ? 0x0201 : 0x0102);
    EXPECT_EQ(ToUInt32(bytes, 1), reversed ? 0x04030201u : 0x01020304u);
    EXPECT_EQ(ToInt32(bytes, 1), reversed ? 0x04030201 : 0x01020304);
    EXPECT_EQ(ToInt64(bytes, 1), reversed ? 0x0807060504030201 : 0x0102030405060708);
    EXPECT_EQ(sys.questions, 5);
    EXPECT_EQ(in_place.AccessorCalls(), 5);
  }
}

TEST(BigEndianBitConverter, ReversesACopy) {
  std::vector<unsigned char> buffer(300);
  std::iota(buffer.begin(), buffer.end(), static_cast<unsigned char>(1));
  const std::vector<unsigned char> before = buffer;
  for (const std::int32_t start : {0, 1, 7}) {
    for (const std::int32_t count : {0, 1, 7, 8, 9, 15, 16, 17, 64, 255}) {
      const std::unique_ptr<unsigned char, decltype(&std::free)> block(
          ReverseBytes(buffer.data(), start, count), &std::free);
      ASSERT_NE(block, nullptr);
      EXPECT_TRUE(std::equal(block.get(), block.get() + count, before.rend() - start - count))
          << start << ' ' << count;
    }
  }
  EXPECT_EQ(buffer, before);
  EXPECT_EQ(ReverseBytes(buffer.data(), 0, -1), nullptr);
  EXPECT_EQ(ReverseBytes(buffer.data(), 0, INT32_MIN), nullptr);
}

}  // namespace
