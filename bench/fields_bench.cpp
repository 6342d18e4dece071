// Phone numbers, colours, numbers; dates and identifiers.

#include "common/utils/fields.h"

#include <uuid/uuid.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <utility>

#include "bench.h"
#include "common/utils/dates.h"
#include "common/utils/identifiers.h"
#include "platform/autorelease_pool.h"

namespace {

RgbColor ColorByCharconv(std::string_view code) {
  if (code.starts_with('#')) code.remove_prefix(1);
  RgbColor color{};
  if (code.size() != 6) return color;
  std::from_chars(code.data(), code.data() + 2, color.red, 16);
  std::from_chars(code.data() + 2, code.data() + 4, color.green, 16);
  std::from_chars(code.data() + 4, code.data() + 6, color.blue, 16);
  return color;
}

bool PhoneByAllOf(std::string_view text, char separator) {
  return std::all_of(text.begin(), text.end(),
                     [separator](char byte) { return (byte >= '0' && byte <= '9') || byte == separator; });
}

bool PhoneByStrspn(const char* text, char separator) {
  const char accepted[] = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', separator, '\0'};
  return text[::strspn(text, accepted)] == '\0';
}

void BenchPhone(const std::string& data, const char* goal, const std::string& text) {
  static volatile char separator = '-';  // volatile: no contender may be compiled for this one value
  Compare(
      "IsPhoneFormat/" + data, goal, [=] { return Utils::IsPhoneFormat(text.c_str(), separator); },
      Peer{"std::all_of", [=] { return PhoneByAllOf(text.c_str(), separator); }},
      Peer{"strspn", [=] { return PhoneByStrspn(text.c_str(), separator); }});
}

std::tm LocalTime(std::time_t time) {
  ::tzset();  // as localtime does: notices a changed time zone
  std::tm fields{};
  ::localtime_r(&time, &fields);
  return fields;
}

std::string DateAndTime(std::time_t time) {
  const std::tm fields = LocalTime(time);
  char text[24];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields)};
}

std::string Date(const std::tm& fields) {
  char text[16];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &fields)};
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

Block TimeByPrint(std::uint32_t seconds) {
  Block text(static_cast<char*>(std::malloc(16)));
  std::snprintf(text.get(), 16, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

std::string UuidByLibuuid() {
  uuid_t bytes;
  ::uuid_generate(bytes);
  char text[UUID_STR_LEN];
  ::uuid_unparse_lower(bytes, text);
  return text;
}

const bool kRegistered = [] {
  BenchPhone("8 digits", kCallGoal, "55501000");
  BenchPhone("17 digits", kCallGoal, "55501000199555010");
  BenchPhone("12 bytes, 2 separators", kCallGoal, "555-010-0199");
  BenchPhone("the first byte is wrong", kCallGoal, "+55-010-0199");
  BenchPhone("1 KiB", "1.3", Repeated("555-0100", kKiB));
  const auto compare = [](const char* name, auto ours, const char* peer, auto other) {
    Compare(name, kCallGoal, ours, Peer{peer, other});
  };
  static volatile int digit = '5';
  compare(
      "isNotPhoneNumberChar/a digit", [] { return Utils::isNotPhoneNumberChar(digit); }, "strchr",
      [] { return ::strchr("0123456789#*+,;", digit) == nullptr; });
  const std::string color = "#FF80a0";
  compare(
      "ColorHexToRGB/#FF80a0", [=] { return Utils::ColorHexToRGB(color.c_str()); }, "std::from_chars",
      [=] { return ColorByCharconv(color); });
  const std::string number = "1700000000";
  compare(
      "GetZeroIntIsNull/10 digits", [=] { return Utils::GetZeroIntIsNull(number.c_str()); }, "atoi",
      [=] { return std::atoi(number.c_str()); });
  compare(
      "GetZeroLongIsNull/10 digits", [=] { return Utils::GetZeroLongIsNull(number.c_str()); }, "atol",
      [=] { return std::atol(number.c_str()); });

  static constexpr long kTime = 1700000000;
  const char* const strftime = "localtime_r and strftime";
  compare(
      "ConvertSecondsToTime/3661 s", [] { return Block(Utils::ConvertSecondsToTime(3661)); }, "snprintf",
      [] { return TimeByPrint(3661); });
  compare(
      "GetCurrentDate/now", [] { return Block(Utils::GetCurrentDate()); }, strftime,
      [] { return Block(::strdup(DateAndTime(std::time(nullptr)).c_str())); });
  compare(
      "ConvertUtcToLocalDate/in 2023", [] { return Utils::ConvertUtcToLocalDate(kTime); }, strftime,
      [] { return DateAndTime(kTime); });
  compare(
      "MonthRange/a November", [] { return Utils::MonthRange(kTime); }, "localtime_r, mktime and strftime",
      [] { return MonthByMktime(kTime); });
  const auto uuid = [] {
    const AutoreleasePool pool;
    return Utils::GenerateLowerUuid();
  };
  Compare("GenerateLowerUuid/one", kEqualGoal, uuid, Peer{"libuuid", UuidByLibuuid});
  return true;
}();

}  // namespace
