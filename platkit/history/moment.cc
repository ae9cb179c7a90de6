#include "platkit/history/moment.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ctime>

namespace platkit::history {
namespace {

// 9999-12-31T23:59:59Z. Later times have no text of the usual form.
constexpr int64_t kLastSecond = 253'402'300'799;

std::optional<int64_t> ParseNumber(std::string_view text) {
  int64_t number = 0;
  const char *end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  const bool isNumber = !text.empty() && text[0] != '-' && parsed.ec == std::errc() && parsed.ptr == end;
  return isNumber && number <= kLastSecond ? std::optional(number) : std::nullopt;
}

// Compares a text with a pattern. In the pattern, '0' matches any digit, '_' matches a blank or a T, and every other
// character matches itself.
bool HasForm(std::string_view text, std::string_view form) {
  return std::ranges::equal(text, form, [](char c, char expected) {
    if (expected == '0') return c >= '0' && c <= '9';
    return expected == '_' ? c == ' ' || c == 'T' : c == expected;
  });
}

int TwoDigits(std::string_view text, size_t position) {
  return (text[position] - '0') * 10 + (text[position + 1] - '0');
}

// Reads 03:12 or 03:12:00.
bool ReadClock(std::string_view text, tm &parts) {
  if (!HasForm(text, "00:00") && !HasForm(text, "00:00:00")) return false;
  parts.tm_hour = TwoDigits(text, 0);
  parts.tm_min = TwoDigits(text, 3);
  parts.tm_sec = text.size() > 5 ? TwoDigits(text, 6) : 0;
  return parts.tm_hour < 24 && parts.tm_min < 60 && parts.tm_sec < 60;
}

bool ReadDate(std::string_view text, tm &parts) {
  if (!HasForm(text, "0000-00-00")) return false;
  parts.tm_year = TwoDigits(text, 0) * 100 + TwoDigits(text, 2) - 1900;
  parts.tm_mon = TwoDigits(text, 5) - 1;
  parts.tm_mday = TwoDigits(text, 8);
  return true;
}

// Converts a local time to seconds since 1970. An hour occurs twice when summer time ends: returns the latest time that
// is not after `end`, or std::nullopt if all are later. Sets `day` to the date in the calendar, which differs from
// `parts` for a date such as 30 February.
std::optional<int64_t> LocalSeconds(const tm &parts, int64_t end, tm &day) {
  std::optional<int64_t> latest;
  for (const int isSummerTime : {-1, 0, 1}) {
    tm copy = parts;
    copy.tm_isdst = isSummerTime;
    const int64_t seconds = mktime(&copy);
    const bool isShown = isSummerTime < 0 || (copy.tm_hour == parts.tm_hour && copy.tm_min == parts.tm_min);
    if (!isShown || seconds > end || (latest && seconds <= *latest)) continue;
    latest = seconds;
    day = copy;
  }
  return latest;
}

// Converts a date and time to seconds since 1970. Returns std::nullopt if the date is not in the calendar, such as 30
// February.
std::optional<int64_t> SecondsOf(const tm &parts, bool isUtc) {
  tm day = parts;
  const std::optional<int64_t> seconds = isUtc ? timegm(&day) : LocalSeconds(parts, kLastSecond, day);
  return day.tm_mday == parts.tm_mday && day.tm_mon == parts.tm_mon ? seconds : std::nullopt;
}

std::optional<int64_t> ParseDateAndClock(std::string_view text) {
  tm parts = {};
  const bool isUtc = text.ends_with('Z');
  if (isUtc) text.remove_suffix(1);
  constexpr size_t kDateLength = 10;
  if (text.size() <= kDateLength || !HasForm(text.substr(kDateLength, 1), "_")) return std::nullopt;
  if (!ReadDate(text.substr(0, kDateLength), parts) || !ReadClock(text.substr(kDateLength + 1), parts))
    return std::nullopt;
  return SecondsOf(parts, isUtc);
}

std::optional<int64_t> ParseClock(std::string_view text, int64_t end) {
  tm parts = {};
  const time_t last = end;
  if (localtime_r(&last, &parts) == nullptr || !ReadClock(text, parts)) return std::nullopt;
  tm day;
  if (const std::optional<int64_t> today = LocalSeconds(parts, end, day)) return today;
  --parts.tm_mday;
  return LocalSeconds(parts, end, day);
}

}  // namespace

std::optional<MomentPath> SplitMoment(std::string_view path) {
  const size_t at = path.rfind('@');
  if (at == std::string_view::npos || at == 0) return std::nullopt;
  const bool isDouble = at >= 2 && path[at - 1] == '@';
  const size_t folderLength = isDouble ? at - 1 : at;
  return MomentPath{std::string(path.substr(0, folderLength)), std::string(path.substr(folderLength + 1))};
}

std::optional<int64_t> ParseTime(std::string_view text, int64_t end) {
  if (text.starts_with('@')) return ParseNumber(text.substr(1));
  if (const std::optional<int64_t> number = ParseNumber(text)) return number;
  if (text.starts_with('-')) {
    const std::optional<int64_t> age = ParseDuration(text.substr(1));
    return age ? std::optional(end - *age) : std::nullopt;
  }
  if (const std::optional<int64_t> clock = ParseClock(text, end)) return clock;
  return ParseDateAndClock(text);
}

std::optional<int64_t> ParseDuration(std::string_view text) {
  constexpr std::string_view kUnits = "smhd";
  constexpr int64_t kSeconds[] = {1, 60, 3600, 86400};
  if (text.empty()) return std::nullopt;
  const size_t unit = kUnits.find(text.back());
  const std::optional<int64_t> number = ParseNumber(text.substr(0, text.size() - 1));
  if (unit == std::string_view::npos || !number || *number > kLastSecond / kSeconds[unit]) return std::nullopt;
  return *number * kSeconds[unit];
}

std::string TimeText(int64_t seconds) {
  const time_t time = std::clamp<int64_t>(seconds, 0, kLastSecond);
  tm parts;
  char text[32];
  gmtime_r(&time, &parts);
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

}  // namespace platkit::history
