// Durations, dates and months as text.
//
//   char* text = Utils::ConvertSecondsToTime(3661);     // "01:01:01"
//   std::free(text);
//   Utils::ConvertUtcToLocalDate(1700000000)            // "2023-11-14 22:13:20" where the clocks show UTC
//   Utils::MonthRange(1700000000)                       // {"2023-11-01", "2023-11-30"}
//
// Times are seconds since 1970-01-01 00:00:00 UTC; dates are those of the process's time zone, which is
// looked up at every call, so a changed TZ takes effect at once. Every 64-bit time is safe. Strings may throw
// std::bad_alloc.

#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "common/export.h"

namespace Utils {

// Hours, minutes and seconds, "01:02:03"; hours are not wrapped and take the digits they need, two at least.
// A block of 16 bytes that the caller frees; null when there is no memory.
HOSTUTIL_EXPORT char* ConvertSecondsToTime(std::uint32_t seconds);

// The present local date and time, "2023-11-14 22:13:20". A block of 24 bytes that the caller frees; null
// when there is no memory or the clock shows a time that has no date.
HOSTUTIL_EXPORT char* GetCurrentDate();

// The first and the last day of the local month that holds `time`; two empty strings when it has no date. The
// last day is the one that lies 86,400 seconds before the same clock time on the first of the next month,
// both read with the daylight-saving flag of `time`. When the clocks change between `time` and the month's
// end, a clock time within an hour of midnight is therefore off by a day: 00:30 in October's summer time
// gives a last day one too early, and 23:30 in March's winter time gives April 1 for both days. A time around
// noon is safe in every month.
HOSTUTIL_EXPORT std::pair<std::string, std::string> MonthRange(long time);

// `time` as local date and time, "2023-11-14 22:13:20"; empty when it has no date, its year being out of
// range. Years past 9999 take more digits.
HOSTUTIL_EXPORT std::string ConvertUtcToLocalDate(long time);

}  // namespace Utils
