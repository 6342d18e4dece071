#include "entry_text.h"

#include <unordered_map>

#include "common/utils.h"
#include "owners.h"

namespace {

constexpr long kDay = 86400;  // seconds
constexpr std::size_t kTimeAt = sizeof "2023-11-14";

// The local dates at the start and at the end of a day of UTC.
struct Day {
  std::string start;
  std::string end;

  // False when the clocks change on this day. No time zone changes them back on the same day.
  bool IsRegular() const { return start.compare(kTimeAt, std::string::npos, end, kTimeAt) == 0; }

  long SecondsAtStart() const {
    const auto number = [&](std::size_t at) { return (start[at] - '0') * 10 + start[at + 1] - '0'; };
    return number(kTimeAt) * 3600 + number(kTimeAt + 3) * 60 + number(kTimeAt + 6);
  }
};

}  // namespace

// The C library breaks times down under a lock that all threads share, and with TZ unset looks for a change
// of /etc/localtime each time: two threads that ask it for every entry make `list` take 1.6 times as long.
std::string DateOf(const std::optional<long>& modified) {
  if (!modified) return {};
  constexpr long kLatest = 253'402'300'799 - 2 * kDay;  // years have four digits
  constexpr std::size_t kMostDays = 4000;               // eleven years, in 0.7 MB
  thread_local std::unordered_map<long, Day> days;
  if (*modified < 0 || *modified > kLatest) return Utils::ConvertUtcToLocalDate(*modified);
  if (days.size() == kMostDays) days.clear();
  Day& day = days[*modified / kDay];
  if (day.start.empty()) {
    const long start = *modified / kDay * kDay;
    day = {Utils::ConvertUtcToLocalDate(start), Utils::ConvertUtcToLocalDate(start + kDay)};
  }
  if (!day.IsRegular()) return Utils::ConvertUtcToLocalDate(*modified);
  const long local = day.SecondsAtStart() + *modified % kDay;
  std::string date = local < kDay ? day.start : day.end;
  std::size_t at = kTimeAt;
  for (const long number : {local / 3600 % 24, local / 60 % 60, local % 60}) {
    date[at] = static_cast<char>('0' + number / 10);
    date[at + 1] = static_cast<char>('0' + number % 10);
    at += 3;
  }
  return date;
}
