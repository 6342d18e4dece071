// Dates and identifiers.

#include "common/utils/dates.h"

#include <uuid/uuid.h>

#include <cstdio>
#include <ctime>

#include "common/utils/identifiers.h"
#include "comparison.h"
#include "platform/autorelease_pool.h"

namespace {

std::tm LocalTime(std::time_t time) {
  ::tzset();
  std::tm fields{};
  ::localtime_r(&time, &fields);
  return fields;
}

Text DateAndTime(const std::tm& fields) {
  constexpr std::size_t kSize = 24;
  Text text(static_cast<char*>(std::malloc(kSize)));
  std::strftime(text.get(), kSize, "%Y-%m-%d %H:%M:%S", &fields);
  return text;
}

std::string Date(const std::tm& fields) {
  char text[16];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &fields)};
}

std::string DateAndTimeString(const std::tm& fields) {
  char text[24];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields)};
}

std::pair<std::string, std::string> MonthByMktime(std::time_t time) {
  std::tm first = LocalTime(time);
  first.tm_mday = 1;
  std::tm last = first;
  last.tm_mon += 1;
  last.tm_mday = 0;
  std::mktime(&last);
  return {Date(first), Date(last)};
}

std::string UuidByLibuuid() {
  uuid_t bytes;
  uuid_generate(bytes);
  char text[UUID_STR_LEN];
  uuid_unparse_lower(bytes, text);
  return text;
}

}  // namespace

void CompareDates() {
  static constexpr char kPeer[] = "tzset, localtime_r, strftime";
  static volatile const long some_time = 1700000000;
  for (const std::uint32_t seconds : {3661U, 4294967295U}) {
    Compare("ConvertSecondsToTime", std::to_string(seconds) + " s", kLevel)
        .Ours([seconds] { return Text(Utils::ConvertSecondsToTime(seconds)); })
        .Peer("snprintf", [seconds] {
          Text text(static_cast<char*>(std::malloc(16)));
          std::snprintf(text.get(), 16, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
          return text;
        });
  }
  const auto shape = [](const auto& job) { return Shape(Describe(job())); };
  Compare("GetCurrentDate", "now", kLevel)
      .Ours([] { return Text(Utils::GetCurrentDate()); }, shape)
      .Peer(
          kPeer, [] { return DateAndTime(LocalTime(std::time(nullptr))); }, shape);
  Compare("MonthRange", "a November", kLevel)
      .Ours([] { return Utils::MonthRange(some_time); })
      .Peer("tzset, localtime_r, mktime, strftime", [] { return MonthByMktime(some_time); });
  Compare("ConvertUtcToLocalDate", "in 2023", kLevel)
      .Ours([] { return Utils::ConvertUtcToLocalDate(some_time); })
      .Peer(kPeer, [] { return DateAndTimeString(LocalTime(some_time)); });
  Compare("GenerateLowerUuid", "one", kLevel)
      .Ours(
          [] {
            const AutoreleasePool pool;
            return Utils::GenerateLowerUuid();
          },
          shape)
      .Peer("libuuid", UuidByLibuuid, shape)
      .Remark(
          "an identifier object and a text object in the thread's pool are made on the way, and every "
          "character "
          "is folded by the platform");
}
