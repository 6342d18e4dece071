// Asking the host's basic services, as the library itself does.

#include "common/basic/basic_services.h"

#include "expect.h"

int main(int, char** arguments) {
  const char* path = arguments[0];
  std::uint64_t size = BasUtilityFile()->GetFileSize(path);
  Expect(size > 0);
}
