// Small fields.

#include "common/utils/fields.h"

#include "expect.h"

int main() {
  Expect(Utils::IsPhoneFormat("555-0100", '-'));
  const RgbColor orange = Utils::ColorHexToRGB("#FF8000");
  Expect(orange.red == 255 && orange.green == 128 && orange.blue == 0);
  Expect(Utils::GetZeroIntIsNull(nullptr) == 0);
}
