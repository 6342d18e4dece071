// Compares Utils::ColorHexToRGB with a parser of its own. The input is the code.

#include <cctype>
#include <optional>
#include <stdexcept>
#include <string>

#include "common/utils/fields.h"
#include "fuzz/check.h"

namespace {

int DigitValue(char digit) {
  const int lower = std::tolower(static_cast<unsigned char>(digit));
  return lower <= '9' ? lower - '0' : lower - 'a' + 10;
}

// The number at the start of a pair: white space, a sign, digits. Nothing if there is no digit.
std::optional<int> Component(std::string_view pair) {
  while (!pair.empty() && std::isspace(static_cast<unsigned char>(pair[0])) != 0) pair.remove_prefix(1);
  const bool negative = !pair.empty() && pair[0] == '-';
  if (negative || (!pair.empty() && pair[0] == '+')) pair.remove_prefix(1);
  std::optional<int> value;
  for (; !pair.empty() && std::isxdigit(static_cast<unsigned char>(pair[0])) != 0; pair.remove_prefix(1)) {
    value = value.value_or(0) * 16 + DigitValue(pair[0]);
  }
  return negative && value ? -*value : value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string code(Fuzz::Input(data, size));
  std::string_view digits = code.c_str();
  if (!digits.empty() && digits[0] == '#') digits.remove_prefix(1);
  const bool six = digits.size() == 6;
  const std::optional<int> red = six ? Component(digits.substr(0, 2)) : 0;
  const std::optional<int> green = six ? Component(digits.substr(2, 2)) : 0;
  const std::optional<int> blue = six ? Component(digits.substr(4, 2)) : 0;

  const Fuzz::Text text(code);
  try {
    const RgbColor color = Utils::ColorHexToRGB(text.c_str());
    Fuzz::Require(red == color.red && green == color.green && blue == color.blue, "the components");
  } catch (const std::invalid_argument&) {
    Fuzz::Require(!red || !green || !blue, "only a pair without a digit throws");
  }
  return 0;
}
