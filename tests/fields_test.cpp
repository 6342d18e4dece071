#include "common/utils/fields.h"

#include "support/testing.h"

TEST(IsPhoneFormat, TakesDigitsAndOneSeparator) {
  EXPECT_TRUE(Utils::IsPhoneFormat("\xE9\x31", '\xE9') && Utils::IsPhoneFormat("+15550109", '+'));
  for (const char* text : {"555-0100", "987642", ""}) EXPECT_TRUE(Utils::IsPhoneFormat(text, '-')) << text;
  // "/" and ":" are the neighbours of 0 and 9.
  for (const char* text : {"555 0100", "+15550109", "1/", "1:", static_cast<const char*>(nullptr)})
    EXPECT_FALSE(Utils::IsPhoneFormat(text, '-')) << text;
}

TEST(IsNotPhoneNumberChar, KnowsFifteenCharacters) {
  const std::set<int> known = {35, 42, 43, 44, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 59};
  for (int code = -300; code <= 600; ++code)
    EXPECT_EQ(Utils::isNotPhoneNumberChar(code), !known.contains(code)) << code;
}

TEST(ColorHexToRGB, ReadsPairs) {
  const std::tuple<const char*, int, int, int> cases[] = {
      {"#FF8000", 255, 128, 0}, {"ff8000", 255, 128, 0}, {"#FFF", 0, 0, 0},
      {"#FF80001", 0, 0, 0},    {"", 0, 0, 0},           {nullptr, 0, 0, 0},
      {"-10000", -1, 0, 0},     {"1z0000", 1, 0, 0},     {" 1+2\t3", 1, 2, 3}};
  for (const auto& expected : cases) {
    const auto [red, green, blue] = Utils::ColorHexToRGB(std::get<0>(expected));
    EXPECT_EQ(std::tuple(std::get<0>(expected), red, green, blue), expected);
  }
  for (const char* code : {"#GG0000", "##12345", "0000 x", "00--00"})
    EXPECT_THROW(Utils::ColorHexToRGB(code), std::invalid_argument) << code;
}

TEST(NumericFields, ReadMissingAsZero) {
  const std::pair<const char*, int> cases[] = {{nullptr, 0}, {"42", 42}, {" -7x", -7}, {"abc", 0}};
  for (const auto& [text, value] : cases)
    EXPECT_TRUE(Utils::GetZeroIntIsNull(text) == value && Utils::GetZeroLongIsNull(text) == value) << text;
  EXPECT_EQ(Utils::GetZeroLongIsNull("9000000000"), 9'000'000'000);
}

TEST(Base64Decode, DecodesNothing) {
  EXPECT_EQ(Utils::Base64Decode("aGk=", 4) + Utils::Base64Decode(nullptr, UINT32_MAX), "");
}
