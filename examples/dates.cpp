// Durations, dates and months.

#include "common/utils/dates.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "expect.h"

int main() {
  ::setenv("TZ", "UTC", 1);
  char* text = Utils::ConvertSecondsToTime(3661);
  Expect(text != nullptr && std::string(text) == "01:01:01");
  std::free(text);
  Expect(Utils::ConvertUtcToLocalDate(1700000000) == "2023-11-14 22:13:20");
  Expect(Utils::MonthRange(1700000000) ==
         std::make_pair(std::string("2023-11-01"), std::string("2023-11-30")));
}
