#include "common/utils/dates.h"

#include <stdlib.h>

#include <ctime>

#include "support/testing.h"

namespace {

// The text in a block that is filled up with zeros. Frees the block.
std::string TakeBlock(char* block, std::size_t size) {
  const std::string bytes(block, size);
  ::free(block);
  const std::string text = bytes.c_str();
  EXPECT_EQ(bytes, text + std::string(size - text.size(), '\0'));
  return text;
}

TEST(ConvertSecondsToTime, DoesNotWrapHours) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0, "00:00:00"},     {59, "00:00:59"},      {3600, "01:00:00"},           {3661, "01:01:01"},
      {90000, "25:00:00"}, {360000, "100:00:00"}, {4294967295, "1193046:28:15"}};
  for (const auto& [seconds, text] : cases)
    EXPECT_EQ(TakeBlock(Utils::ConvertSecondsToTime(seconds), 16), text);
}

TEST(GetCurrentDate, IsNow) {
  ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  const std::string before = Utils::ConvertUtcToLocalDate(std::time(nullptr));
  const std::string now = TakeBlock(Utils::GetCurrentDate(), 24);
  EXPECT_LE(before, now);
  EXPECT_LE(now, Utils::ConvertUtcToLocalDate(std::time(nullptr)));
}

TEST(LocalDates, FollowTheTimeZoneAtEveryCall) {
  // Time zones as rules, which need no zone database.
  constexpr char kUtc[] = "UTC0";
  constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";
  using Month = std::pair<std::string, std::string>;
  const std::tuple<const char*, long, const char*, Month> cases[] = {
      {kUtc, 0, "1970-01-01 00:00:00", {"1970-01-01", "1970-01-31"}},
      {"EST5EDT,M3.2.0,M11.1.0", 0, "1969-12-31 19:00:00", {"1969-12-01", "1969-12-31"}},
      {kUtc, 1700000000, "2023-11-14 22:13:20", {"2023-11-01", "2023-11-30"}},
      {kUtc, 1709164800, "2024-02-29 00:00:00", {"2024-02-01", "2024-02-29"}},
      {kUtc, 1734567890, "2024-12-19 00:24:50", {"2024-12-01", "2024-12-31"}},
      {kUtc, -62198755200, "-0001-01-01 00:00:00", {"-0001-01-01", "-0001-01-31"}},
      {kUtc, 253402300800, "10000-01-01 00:00:00", {"10000-01-01", "10000-01-31"}},
      // The last years whose number, and whose tm_year, fits an int.
      {kUtc, 67767976233532799, "2147483647-12-31 23:59:59", {"2147483647-12-01", "2147483647-12-31"}},
      {kUtc, 67768036191676799, "2147485547-12-31 23:59:59", {}},
      {kUtc, 67768036191676800, "", {}},
      {kUtc, LONG_MIN, "", {}},
      // mktime returns -1 for midnight of January 1, 1970, a second ahead of UTC: a valid time.
      {"XXX-0:00:01", -2678401, "1969-12-01 00:00:00", {"1969-12-01", "1969-12-31"}},
      // The clocks changed on March 26 and October 29, 2023: off by a day within an hour of midnight.
      {kBerlin, 1697322600, "2023-10-15 00:30:00", {"2023-10-01", "2023-10-30"}},
      {kBerlin, 1678833000, "2023-03-14 23:30:00", {"2023-04-01", "2023-04-01"}}};
  for (const auto& [zone, time, date, month] : cases) {
    ::setenv("TZ", zone, 1);
    EXPECT_EQ(Utils::ConvertUtcToLocalDate(time), date) << zone << ' ' << time;
    EXPECT_EQ(Utils::MonthRange(time), month) << zone << ' ' << time;
  }
}

}  // namespace
