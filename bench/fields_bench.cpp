// Phone numbers, colours, numbers; dates and identifiers.

#include "common/utils/fields.h"

#include <string.h>
#include <uuid/uuid.h>

#include <algorithm>
#include <charconv>
#include <ctime>

#include "bench.h"
#include "common/utils/dates.h"
#include "common/utils/identifiers.h"
#include "platform/autorelease_pool.h"

static bool operator==(const RgbColor& left, const RgbColor& right) {
  return left.red == right.red && left.green == right.green && left.blue == right.blue;
}

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

Text TimeByPrint(std::uint32_t seconds) {
  Text text = Own(static_cast<char*>(std::malloc(16)));
  std::snprintf(text.block.get(), 16, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

std::string UuidByLibuuid() {
  uuid_t bytes;
  ::uuid_generate(bytes);
  char text[UUID_STR_LEN];
  ::uuid_unparse_lower(bytes, text);
  return text;
}

}  // namespace

void RegisterFields() {
  BenchPhone("8 digits", kCallGoal, "55501000");
  BenchPhone("17 digits", kCallGoal, "55501000199555010");
  BenchPhone("12 bytes, 2 separators", kCallGoal, "555-010-0199");
  BenchPhone("the first byte is wrong", kCallGoal, "+55-010-0199");
  BenchPhone("1 KiB", "1.3", Repeated("555-0100", kKiB));
  for (const int code : {int{'5'}, int{'x'}, 1000}) {
    const auto by_strchr = [=] { return code <= 0 || code > 127 || !::strchr("0123456789#*+,;", code); };
    Compare(
        "isNotPhoneNumberChar/code " + std::to_string(code), kCallGoal,
        [=] { return Utils::isNotPhoneNumberChar(code); }, Peer{"strchr", by_strchr});
  }
  const std::string color = "#FF80a0";
  const std::string number = "1700000000";
  const Peer charconv{"std::from_chars", [=] { return ColorByCharconv(color); }};
  const Peer atoi{"atoi", [=] { return std::atoi(number.c_str()); }};
  const Peer atol{"atol", [=] { return std::atol(number.c_str()); }};
  const Peer empty{"std::string()", [] { return std::string(); }};
  Compare(
      "ColorHexToRGB/#FF80a0", kCallGoal, [=] { return Utils::ColorHexToRGB(color.c_str()); }, charconv);
  Compare(
      "GetZeroIntIsNull/10 digits", kCallGoal, [=] { return Utils::GetZeroIntIsNull(number.c_str()); }, atoi);
  Compare(
      "GetZeroLongIsNull/10 digits", kCallGoal, [=] { return Utils::GetZeroLongIsNull(number.c_str()); },
      atol);
  Compare(
      "Base64Decode/always empty", kCallGoal, [] { return Utils::Base64Decode("", 0); }, empty);

  const long time = 1700000000;
  for (const std::uint32_t seconds : {3661U, 4294967295U}) {
    Compare(
        "ConvertSecondsToTime/" + std::to_string(seconds) + " s", kCallGoal,
        [=] { return Own(Utils::ConvertSecondsToTime(seconds)); },
        Peer{"snprintf", [=] { return TimeByPrint(seconds); }});
  }
  const auto now = [] { return Unchecked{Own(::strdup(DateAndTime(std::time(nullptr)).c_str()))}; };
  const auto uuid = [] {
    const AutoreleasePool pool;
    return Unchecked{Utils::GenerateLowerUuid()};
  };
  const char* const strftime = "localtime_r and strftime";
  const Peer date{strftime, [=] { return DateAndTime(time); }};
  const Peer mktime{"localtime_r, mktime and strftime", [=] { return MonthByMktime(time); }};
  const Peer libuuid{"libuuid", [] { return Unchecked{UuidByLibuuid()}; }};
  Compare(
      "GetCurrentDate/now", kCallGoal, [] { return Unchecked{Own(Utils::GetCurrentDate())}; },
      Peer{strftime, now});
  Compare(
      "ConvertUtcToLocalDate/in 2023", kCallGoal, [=] { return Utils::ConvertUtcToLocalDate(time); }, date);
  Compare(
      "MonthRange/a November", kCallGoal, [=] { return Utils::MonthRange(time); }, mktime);
  Compare("GenerateLowerUuid/one", kEqualGoal, uuid, libuuid);
}
