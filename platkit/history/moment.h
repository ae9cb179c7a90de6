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

// Splits DIR@TIME at its last '@', or at the '@' before it if the two are adjacent, as in DIR@@1763694720. Returns
// std::nullopt if the '@' is missing or is the first character.
std::optional<MomentPath> SplitMoment(std::string_view path);

// The seconds since 1970 for one of these forms, or nothing:
//
//   2026-11-21T03:12:00Z   UTC; the seconds may be missing
//   2026-11-21 03:12:00    local time; the seconds may be missing, and T may separate date and time
//   @1763694720            seconds since 1970; the '@' may be missing
//   03:12                  the last such local time at or before `end`; seconds may follow
//   -10m                   before `end`, in seconds (s), minutes (m), hours (h) or days (d)
std::optional<int64_t> ParseTime(std::string_view text, int64_t end);

// A duration such as 10m, in seconds; the units are those of -10m above. Nothing if the text has another form.
std::optional<int64_t> ParseDuration(std::string_view text);

// The whole seconds of a wall time in nanoseconds. Times are compared in seconds, as they are shown.
constexpr int64_t SecondsOf(int64_t wall) {
  constexpr int64_t kNanos = 1'000'000'000;
  return wall / kNanos - (wall % kNanos < 0 ? 1 : 0);
}

// A time in UTC, such as 2026-11-21T03:12:00Z.
std::string TimeText(int64_t seconds);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_MOMENT_H
