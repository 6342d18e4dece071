// Taking paths apart.

#include "common/utils/paths.h"

#include "expect.h"
#include "platform/autorelease_pool.h"

int main() {
  const AutoreleasePool pool;  // for GetParentDir
  Expect(Utils::GetParentDir("/a/b/c.txt") == "/a/b/");
  Expect(Utils::GetFileName("/a/b/c.txt") == "c.txt");
  Expect(Utils::GetFileNameWithoutExt("/a/b/c.txt") == "/a/b/c");
  Expect(Utils::GetFilePostfix("/a/b/c.txt") == "txt");
}
