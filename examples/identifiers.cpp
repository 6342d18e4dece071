// A fresh identifier.

#include "common/utils/identifiers.h"

#include "expect.h"
#include "platform/autorelease_pool.h"

int main() {
  AutoreleasePool pool;
  std::string id = Utils::GenerateLowerUuid();
  Expect(id.size() == 36 && id != Utils::GenerateLowerUuid());
}
