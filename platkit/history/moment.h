// Times as users write them: in DIR@TIME, the path of a moment of a history, and in options.
#ifndef PLATKIT_HISTORY_MOMENT_H
#define PLATKIT_HISTORY_MOMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platkit::history {

// The path of a moment: a folder and a time.
struct MomentPath {
  std::string folder;
  std::string time;
};

// Splits DIR@TIME at its last '@'. If the last two '@' are adjacent, as in DIR@@1763694720, splits it at the first of
// the two. Returns std::nullopt if the '@' is missing or is the first character.
std::optional<MomentPath> SplitMoment(std::string_view path);

// Parses a time in one of these forms and returns it in seconds since 1970, or std::nullopt for other texts:
//
//   2026-11-21T03:12:00Z   UTC; the seconds may be missing
//   2026-11-21 03:12:00    local time; the seconds may be missing, and T may separate date and time
//   @1763694720            seconds since 1970; the '@' may be missing
//   03:12                  the last such local time at or before `end`; seconds may follow
//   -10m                   this long before `end`, in seconds (s), minutes (m), hours (h) or days (d)
std::optional<int64_t> ParseTime(std::string_view text, int64_t end);

// Parses a duration such as 10m and returns it in seconds. The units are those of -10m above. Returns std::nullopt if
// the text has another form.
std::optional<int64_t> ParseDuration(std::string_view text);

// Converts a wall time from nanoseconds to seconds, rounded down. Times are compared in whole seconds, because they are
// shown in whole seconds.
constexpr int64_t SecondsOf(int64_t wall) {
  constexpr int64_t kNanos = 1'000'000'000;
  return wall / kNanos - (wall % kNanos < 0 ? 1 : 0);
}

// A time in UTC, such as 2026-11-21T03:12:00Z. A time outside the years 1970 to 9999 becomes the nearest time within
// them.
std::string TimeText(int64_t seconds);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_MOMENT_H
