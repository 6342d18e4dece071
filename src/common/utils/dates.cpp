#include "common/utils/dates.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

namespace {

constexpr std::size_t kDurationBlock = 16;  // "1193046:28:15" is the longest
constexpr std::size_t kDateBlock = 24;
constexpr std::size_t kLongestDate = 32;  // a year of ten digits and a sign

// The local date and time in the time zone that was read last.
std::optional<std::tm> BrokenDown(std::time_t time) {
  std::tm fields{};
  if (::localtime_r(&time, &fields) == nullptr) return std::nullopt;
  return fields;
}

// std::localtime without its shared result; reads the time zone anew, as that does.
std::optional<std::tm> LocalTime(std::time_t time) {
  ::tzset();
  return BrokenDown(time);
}

// The time of a local date, whose fields need not be normalised. std::mktime's -1 is also a valid time, so
// success is read from the weekday, which mktime sets.
std::optional<std::time_t> ToTime(std::tm fields) {
  fields.tm_wday = -1;
  const std::time_t time = std::mktime(&fields);
  if (fields.tm_wday < 0) return std::nullopt;
  return time;
}

// Writes `value` with at least `width` digits and returns the end. Several times as fast as snprintf.
char* WriteNumber(char* write, std::int64_t value, std::ptrdiff_t width) {
  if (value < 0) {
    *write++ = '-';
    value = -value;
  }
  char digits[std::numeric_limits<std::int64_t>::digits10 + 1];
  const char* const end = std::to_chars(digits, std::end(digits), value).ptr;
  for (std::ptrdiff_t missing = width - (end - digits); missing > 0; --missing) *write++ = '0';
  return std::copy(static_cast<const char*>(digits), end, write);
}

// Two-digit numbers with `between` before each of them. REQUIRES: from 0 to 99.
char* WritePairs(char* write, char between, std::initializer_list<int> values) {
  for (const int value : values) {
    *write++ = between;
    *write++ = static_cast<char>('0' + value / 10);
    *write++ = static_cast<char>('0' + value % 10);
  }
  return write;
}

class DateText {
 public:
  // In 64 bits: tm_year + 1900 may overflow an int.
  explicit DateText(const std::tm& date)
      : end_(WritePairs(WriteNumber(text_, std::int64_t{date.tm_year} + 1900, 4), '-',
                        {date.tm_mon + 1, date.tm_mday})) {}
  DateText& WithTime(const std::tm& date) {
    end_ = WritePairs(WritePairs(end_, ' ', {date.tm_hour}), ':', {date.tm_min, date.tm_sec});
    return *this;
  }
  std::string_view View() const { return {text_, static_cast<std::size_t>(end_ - text_)}; }
  std::string String() const { return std::string(View()); }

 private:
  char text_[kLongestDate];
  char* end_;
};

char* ZeroedBlock(std::size_t size) {
  return static_cast<char*>(std::calloc(size, 1));
}

}  // namespace

char* Utils::ConvertSecondsToTime(std::uint32_t seconds) {
  char* const text = ZeroedBlock(kDurationBlock);
  if (text == nullptr) return nullptr;
  const auto minutes = static_cast<int>(seconds / 60 % 60);
  WritePairs(WriteNumber(text, seconds / 3600, 2), ':', {minutes, static_cast<int>(seconds % 60)});
  return text;
}

char* Utils::GetCurrentDate() {
  const std::optional<std::tm> now = LocalTime(std::time(nullptr));
  if (!now) return nullptr;
  char* const text = ZeroedBlock(kDateBlock);
  if (text != nullptr) DateText(*now).WithTime(*now).View().copy(text, kDateBlock - 1);
  return text;
}

std::pair<std::string, std::string> Utils::MonthRange(long time) {
  constexpr std::time_t kDay = 86400;
  std::optional<std::tm> date = LocalTime(time);
  if (!date) return {};
  date->tm_mon += 1;  // a thirteenth month is the next January
  date->tm_mday = 1;
  const std::optional<std::time_t> next_month = ToTime(*date);
  if (!next_month) return {};
  const std::optional<std::tm> last = BrokenDown(*next_month - kDay);  // mktime has read the time zone
  if (!last) return {};
  std::tm first = *last;
  first.tm_mday = 1;
  return {DateText(first).String(), DateText(*last).String()};
}

std::string Utils::ConvertUtcToLocalDate(long time) {
  const std::optional<std::tm> date = LocalTime(time);
  return date ? DateText(*date).WithTime(*date).String() : std::string();
}
