// Decodes a 16-bit integer at an odd index.

#include "common/big_endian_bit_converter.h"

#include "expect.h"

int main() {
  const unsigned char bytes[] = {0x00, 0x12, 0x34};
  Expect(BigEndianBitConverter::ToUInt16(bytes, 1) == 0x1234);
}
