#include "common/utils/fields.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <stdexcept>

namespace {

TEST(IsPhoneFormat, TakesDigitsAndOneSeparator) {
  EXPECT_TRUE(Utils::IsPhoneFormat("555-0100", '-'));
  EXPECT_FALSE(Utils::IsPhoneFormat("555-0100", ' '));
  EXPECT_TRUE(Utils::IsPhoneFormat("+15550109", '+'));
  EXPECT_FALSE(Utils::IsPhoneFormat("+15550109", '-'));
  EXPECT_TRUE(
      Utils::IsPhoneFormat("\xE9"
                           "1",
                           '\xE9'));
  EXPECT_FALSE(Utils::IsPhoneFormat("1/", '-'));  // the neighbours of 0 and 9
  EXPECT_FALSE(Utils::IsPhoneFormat("1:", '-'));
  EXPECT_TRUE(Utils::IsPhoneFormat("", '-'));
  EXPECT_FALSE(Utils::IsPhoneFormat(nullptr, '-'));
}

TEST(IsNotPhoneNumberChar, KnowsFifteenCharacters) {
  const std::set<int> known = {35, 42, 43, 44, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 59};
  for (int code = -300; code <= 600; ++code)
    EXPECT_EQ(Utils::isNotPhoneNumberChar(code), !known.contains(code)) << code;
  EXPECT_TRUE(Utils::isNotPhoneNumberChar(INT_MIN));
  EXPECT_TRUE(Utils::isNotPhoneNumberChar(INT_MAX));
}

TEST(ColorHexToRGB, ReadsPairs) {
  const struct {
    const char* code;
    RgbColor color;
  } cases[] = {{"#FF8000", {255, 128, 0}},
               {"ff8000", {255, 128, 0}},
               {"#0A0b0C", {10, 11, 12}},
               {"#FFF", {0, 0, 0}},
               {"#FF80001", {0, 0, 0}},
               {"##123456", {0, 0, 0}},
               {"", {0, 0, 0}},
               {nullptr, {0, 0, 0}},
               {"-10000", {-1, 0, 0}},
               {"-f0000", {-15, 0, 0}},
               {"1z0000", {1, 0, 0}},
               {" 1+2\t3", {1, 2, 3}}};
  for (const auto& c : cases) {
    const RgbColor color = Utils::ColorHexToRGB(c.code);
    EXPECT_EQ(color.red, c.color.red) << (c.code != nullptr ? c.code : "null");
    EXPECT_EQ(color.green, c.color.green) << (c.code != nullptr ? c.code : "null");
    EXPECT_EQ(color.blue, c.color.blue) << (c.code != nullptr ? c.code : "null");
  }
  for (const char* code : {"#GG0000", "##12345", "0000 x", "00--00"}) {
    EXPECT_THROW(Utils::ColorHexToRGB(code), std::invalid_argument) << code;
  }
}

TEST(NumericFields, ReadMissingAsZero) {
  const struct {
    const char* text;
    long value;
  } cases[] = {{nullptr, 0},           {"", 0}, {"42", 42}, {" -7x", -7}, {"+8", 8}, {"abc", 0},
               {"2147483647", INT_MAX}};
  for (const auto& c : cases) {
    EXPECT_EQ(Utils::GetZeroIntIsNull(c.text), c.value);
    EXPECT_EQ(Utils::GetZeroLongIsNull(c.text), c.value);
  }
  EXPECT_EQ(Utils::GetZeroLongIsNull("9000000000"), 9'000'000'000);
}

TEST(Base64Decode, DecodesNothing) {
  EXPECT_EQ(Utils::Base64Decode("aGk=", 4), "");
  EXPECT_EQ(Utils::Base64Decode(nullptr, UINT32_MAX), "");
}

}  // namespace
