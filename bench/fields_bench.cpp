// Phone numbers, colours, numbers.

#include "common/utils/fields.h"

#include <string.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "comparison.h"
#include "sample_data.h"

namespace {

std::string Describe(const RgbColor& color) {
  return std::to_string(color.red) + ' ' + std::to_string(color.green) + ' ' + std::to_string(color.blue);
}

RgbColor ColorByCharconv(std::string_view code) {
  if (code.starts_with('#')) code.remove_prefix(1);
  if (code.size() != 6) return {};
  RgbColor color{};
  std::from_chars(code.data(), code.data() + 2, color.red, 16);
  std::from_chars(code.data() + 2, code.data() + 4, color.green, 16);
  std::from_chars(code.data() + 4, code.data() + 6, color.blue, 16);
  return color;
}

RgbColor ColorByScan(const char* code) {
  unsigned red = 0;
  unsigned green = 0;
  unsigned blue = 0;
  if (std::sscanf(code + (*code == '#'), "%2x%2x%2x", &red, &green, &blue) != 3) return {};
  return {static_cast<int>(red), static_cast<int>(green), static_cast<int>(blue)};
}

void ComparePhoneFormat(const std::string& data, const std::string& number) {
  static volatile char some_separator = '-';  // known to nobody before the run
  Compare("IsPhoneFormat", data, kLevel)
      .Ours([&number] { return Utils::IsPhoneFormat(number.c_str(), some_separator); })
      .Peer("std::all_of",
            [&number] {
              const std::string_view text = number.c_str();
              const char separator = some_separator;
              return std::all_of(text.begin(), text.end(), [separator](char byte) {
                return (byte >= '0' && byte <= '9') || byte == separator;
              });
            })
      .Remark(
          "the peer measures the text first and then looks at four bytes a round; how much that is worth "
          "differs "
          "from build to build, with the place its loop gets");
}

}  // namespace

void CompareFields() {
  const auto describe = [](const auto& job) { return Describe(job()); };
  ComparePhoneFormat("12 bytes", Kept("555-010-0199"));
  ComparePhoneFormat("12 bytes, refused at once", Kept("+55-010-0199"));
  ComparePhoneFormat("40 bytes", Kept(Repeated("555-0100-", 40)));
  for (const int code : {int{'5'}, int{';'}, int{'x'}, 1000}) {
    Compare("isNotPhoneNumberChar", "code " + std::to_string(code), kLevel)
        .Ours([code] { return Utils::isNotPhoneNumberChar(code); })
        .Peer("strchr",
              [code] { return code <= 0 || code > 127 || ::strchr("0123456789#*+,;", code) == nullptr; });
  }
  const std::string& color = Kept("#FF80a0");
  Compare("ColorHexToRGB", "#FF80a0", kLevel)
      .Ours([&color] { return Utils::ColorHexToRGB(color.c_str()); }, describe)
      .Peer(
          "std::from_chars", [&color] { return ColorByCharconv(color.c_str()); }, describe)
      .Peer(
          "sscanf", [&color] { return ColorByScan(color.c_str()); }, describe);
  const std::string& number = Kept("1700000000");
  Compare("GetZeroIntIsNull", "10 digits", kLevel)
      .Ours([&number] { return Utils::GetZeroIntIsNull(number.c_str()); })
      .Peer("atoi", [&number] { return std::atoi(number.c_str()); });
  Compare("GetZeroLongIsNull", "10 digits", kLevel)
      .Ours([&number] { return Utils::GetZeroLongIsNull(number.c_str()); })
      .Peer("atol", [&number] { return std::atol(number.c_str()); });
  Compare("Base64Decode", "nothing", kLevel)
      .Ours([] { return Utils::Base64Decode("", 0); })
      .Remark("gives the empty text and does nothing to compare");
}
