// Replacing, splitting and joining.

#include "common/utils/text.h"

#include <cstdlib>
#include <string>
#include <vector>

#include "expect.h"

int main() {
  std::string text = "a.b.c";
  Expect(Utils::ReplaceStr(text, ".", "/") == 2);
  Expect(text == "a/b/c");

  std::vector<std::string> fields;
  Utils::SplitWithFlag("a,,b", ',', fields);
  Expect(fields == std::vector<std::string>{"a", "", "b"});

  char* joined = Utils::ConcatStr("dir", "/x");
  Expect(joined != nullptr && std::string(joined) == "dir/x");
  std::free(joined);
}
