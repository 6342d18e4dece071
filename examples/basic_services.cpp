// Calls a basic service as the library does.

#include "common/basic/basic_services.h"

#include "expect.h"

int main(int, char** arguments) {
  const char* path = arguments[0];
  std::uint64_t size = BasUtilityFile()->GetFileSize(path);
  Expect(size > 0);
}
