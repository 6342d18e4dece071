// Comparing and matching.

#include "common/utils/matching.h"

#include "expect.h"

int main() {
  Expect(Utils::CompareI("Hello", "hELLO") == 0);
  Expect(Utils::StartWith("abc", "ab"));
  Expect(Utils::MatchString("report.pdf", ".*\\.pdf", nullptr));
}
