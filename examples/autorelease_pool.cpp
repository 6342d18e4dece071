// A pool for each step of a long loop, so that the objects of all of them do not pile up.

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
