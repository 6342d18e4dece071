// Durations, dates and months as text.
//
//   char* text = Utils::ConvertSecondsToTime(3661);     // "01:01:01"
//   std::free(text);
//   Utils::ConvertUtcToLocalDate(1700000000)            // "2023-11-14 22:13:20" with TZ=UTC
//   Utils::MonthRange(1700000000)                       // {"2023-11-01", "2023-11-30"}
//
// Times are seconds since 1970-01-01 00:00:00 UTC. Dates are local to the process's time zone, which is read
// at every call, so a changed TZ takes effect at once. Every 64-bit time is accepted. Functions that return
// strings throw std::bad_alloc.

#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "common/export.h"

namespace Utils {

// Hours, minutes and seconds, "01:02:03"; hours do not become days: "100:00:00". A block of 16 bytes that the
// caller frees; null when out of memory.
HOSTUTIL_EXPORT char* ConvertSecondsToTime(std::uint32_t seconds);

// The current local date and time, "2023-11-14 22:13:20". A block of 24 bytes that the caller frees; null
// when out of memory or when the current time has no date.
HOSTUTIL_EXPORT char* GetCurrentDate();

// The first and the last day of the local month that holds `time`. Two empty strings when `time` has no date,
// or when std::mktime cannot represent the same clock time on the first of the next month, as in the last
// month that has dates. The last day is the date 86,400 seconds before that, with the daylight-saving flag of
// `time`. If the clocks change between `time` and the end of the month, the result is therefore off by a day
// for clock times within an hour of midnight: 00:30 in October's summer time gives a last day one too early,
// and 23:30 in March's winter time gives April 1 for both days. A time around noon is right in every month.
HOSTUTIL_EXPORT std::pair<std::string, std::string> MonthRange(long time);

// `time` as local date and time, "2023-11-14 22:13:20"; empty when it has no date because its year is out of
// range. Years after 9999 take more digits.
HOSTUTIL_EXPORT std::string ConvertUtcToLocalDate(long time);

}  // namespace Utils
