#include "common/utils/fields.h"

#include "support/testing.h"

TEST(IsPhoneFormat, AcceptsDigitsAndOneSeparator) {
  const std::string many = Times(40, "555-0100");
  for (const std::string& text : {std::string("555-0100"), std::string("987642"), std::string(), many})
    EXPECT_TRUE(Utils::IsPhoneFormat(text.c_str(), '-')) << text;
  // "/" and ":" are next to 0 and 9.
  for (const std::string& text : {std::string("555 0100"), std::string("+15550109"), std::string("1/"),
                                  std::string("-:"), many + "+", many + "\n" + many})
    EXPECT_FALSE(Utils::IsPhoneFormat(text.c_str(), '-')) << text;
  EXPECT_TRUE(Utils::IsPhoneFormat("\xE9\x31", '\xE9'));
  EXPECT_TRUE(Utils::IsPhoneFormat("123", '\0'));
  EXPECT_FALSE(Utils::IsPhoneFormat("1-3", '\0'));
  EXPECT_FALSE(Utils::IsPhoneFormat(nullptr, '-'));
}

TEST(IsNotPhoneNumberChar, KnowsFifteenCharacters) {
  for (int code = -300; code <= 600; ++code) {
    const bool known = code > 0 && code < 256 && std::strchr("0123456789#*+,;", code) != nullptr;
    EXPECT_EQ(Utils::isNotPhoneNumberChar(code), !known) << code;
  }
}

TEST(ColorHexToRGB, ReadsPairs) {
  for (const char* const code : {"#018002", "1+80 2"}) {
    const RgbColor color = Utils::ColorHexToRGB(code);
    EXPECT_EQ(std::tuple(color.red, color.green, color.blue), std::tuple(1, 128, 2)) << code;
  }
  for (const char* const code : {"#FFF", "#FF80001", "", static_cast<const char*>(nullptr)})
    EXPECT_EQ(Utils::ColorHexToRGB(code).red, 0);
  for (const char* code : {"#GG0000", "##12345", "0000 x", "00--00"})
    EXPECT_THROW(Utils::ColorHexToRGB(code), std::invalid_argument) << code;
}

TEST(NumericFields, ReadMissingAsZero) {
  const std::pair<const char*, int> cases[] = {{nullptr, 0}, {"42", 42}, {" -7x", -7}, {"abc", 0}};
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(Utils::GetZeroIntIsNull(text), value);
    EXPECT_EQ(Utils::GetZeroLongIsNull(text), value);
  }
  EXPECT_EQ(Utils::GetZeroLongIsNull("9000000000"), 9'000'000'000);
}
