// A pool for each step of a long loop, so that its objects are released at the end of the step.

#include "platform/autorelease_pool.h"

#include <string>

#include "common/utils/paths.h"
#include "expect.h"

int main() {
  for (const char* path : {"/a/b", "/c/d"}) {
    AutoreleasePool pool;
    std::string folder = Utils::GetParentDir(path);
    Expect(folder.size() == 3);
  }
}
