#include "common/utils/dates.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "support/scoped_environment.h"

namespace {

using Range = std::pair<std::string, std::string>;

// Zones as rules, so that no zone database is needed.
constexpr char kUtc[] = "UTC0";
constexpr char kNewYork[] = "EST5EDT,M3.2.0,M11.1.0";
constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(ConvertSecondsToTime, CountsHoursOn) {
  const struct {
    std::uint32_t seconds;
    const char* text;
  } cases[] = {{0, "00:00:00"},       {59, "00:00:59"},
               {60, "00:01:00"},      {3599, "00:59:59"},
               {3600, "01:00:00"},    {3661, "01:01:01"},
               {90000, "25:00:00"},   {359999, "99:59:59"},
               {360000, "100:00:00"}, {4294967295, "1193046:28:15"}};
  for (const auto& c : cases) {
    char* const text = Utils::ConvertSecondsToTime(c.seconds);
    EXPECT_STREQ(text, c.text);
    for (std::size_t i = std::strlen(c.text); i < 16; ++i) EXPECT_EQ(text[i], '\0');
    std::free(text);
  }
}

TEST(GetCurrentDate, IsNow) {
  const ScopedEnvironment zone("TZ", kBerlin);
  const std::time_t before = std::time(nullptr);
  char* const text = Utils::GetCurrentDate();
  const std::time_t after = std::time(nullptr);
  ASSERT_NE(text, nullptr);
  bool found = false;
  for (std::time_t time = before; time <= after; ++time) found |= Utils::ConvertUtcToLocalDate(time) == text;
  EXPECT_TRUE(found) << text;
  for (std::size_t i = 19; i < 24; ++i) EXPECT_EQ(text[i], '\0');
  std::free(text);
}

TEST(ConvertUtcToLocalDate, FollowsTheZoneAtEveryCall) {
  const struct {
    const char* zone;
    long time;
    const char* text;
  } cases[] = {{kUtc, 0, "1970-01-01 00:00:00"},
               {kUtc, 1700000000, "2023-11-14 22:13:20"},
               {kNewYork, 1700000000, "2023-11-14 17:13:20"},
               {kBerlin, 1700000000, "2023-11-14 23:13:20"},
               {kBerlin, 1690000000, "2023-07-22 06:26:40"},
               {kUtc, -1, "1969-12-31 23:59:59"},
               {kUtc, -62135596800, "0001-01-01 00:00:00"},
               {kUtc, -62198755200, "-0001-01-01 00:00:00"},
               {kUtc, 253402300800, "10000-01-01 00:00:00"},
               {kUtc, 67767976233532799,
                "2147483647-12-31 23:59:59"},  // 1900 more than tm_year holds, and than int can add
               {kUtc, 67768036191676799, "2147485547-12-31 23:59:59"},
               {kUtc, 67768036191676800, ""},
               {kUtc, LONG_MAX, ""},
               {kUtc, LONG_MIN, ""}};
  for (const auto& c : cases) {
    const ScopedEnvironment zone("TZ", c.zone);
    EXPECT_EQ(Utils::ConvertUtcToLocalDate(c.time), c.text) << c.zone << ' ' << c.time;
  }
}

TEST(MonthRange, IsTheLocalMonths) {
  const struct {
    const char* zone;
    long time;
    Range range;
  } cases[] = {{kUtc, 1700000000, {"2023-11-01", "2023-11-30"}},
               {kUtc, 1709164800, {"2024-02-01", "2024-02-29"}},
               {kUtc, 1677542400, {"2023-02-01", "2023-02-28"}},
               {kUtc, 1734567890, {"2024-12-01", "2024-12-31"}},
               {kUtc, 0, {"1970-01-01", "1970-01-31"}},
               {kNewYork, 0, {"1969-12-01", "1969-12-31"}},
               {kUtc, -1, {"1969-12-01", "1969-12-31"}},
               {kUtc, 67768036191676799, {"", ""}},
               {kUtc, LONG_MAX, {"", ""}},
               {kUtc, LONG_MIN, {"", ""}}};
  for (const auto& c : cases) {
    const ScopedEnvironment zone("TZ", c.zone);
    EXPECT_EQ(Utils::MonthRange(c.time), c.range) << c.zone << ' ' << c.time;
  }
}

// mktime's answer is -1 here: midnight, the first of January 1970, by a clock one second ahead of UTC.
TEST(MonthRange, TakesMinusOneForATime) {
  const ScopedEnvironment zone("TZ", "XXX-0:00:01");
  const long december_first_midnight = -31L * 86400 - 1;
  EXPECT_EQ(Utils::MonthRange(december_first_midnight), Range("1969-12-01", "1969-12-31"));
}

// The month's end is looked for with the clock time and the daylight-saving flag of `time`. Berlin's clocks
// changed on 26 March and 29 October 2023, which moves the times within an hour of midnight over it.
TEST(MonthRange, KeepsTheDaylightSavingFlag) {
  const ScopedEnvironment zone("TZ", kBerlin);
  EXPECT_EQ(Utils::MonthRange(1697322600), Range("2023-10-01", "2023-10-30"));  // 15 October, 00:30
  EXPECT_EQ(Utils::MonthRange(1697326200), Range("2023-10-01", "2023-10-31"));  // 15 October, 01:30
  EXPECT_EQ(Utils::MonthRange(1678829400), Range("2023-03-01", "2023-03-31"));  // 14 March, 22:30
  EXPECT_EQ(Utils::MonthRange(1678833000), Range("2023-04-01", "2023-04-01"));  // 14 March, 23:30
}

}  // namespace
