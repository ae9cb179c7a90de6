// Events of a history and its host: gaps, reboots, sleep, changes of the clock.
#ifndef NODAL_HISTORY_TIMELINE_H
#define NODAL_HISTORY_TIMELINE_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/nodal/history/moment_file.h"

namespace nodal {

// The events between two consecutive samples.
struct TimelineEvent {
  int64_t from;  // the times of the two samples, in seconds since 1970
  int64_t to;
  double seconds;  // the seconds that passed between the samples
  std::string reasons;
};

struct TimelineDay {
  size_t samples = 0;
  uint64_t bytes = 0;
};

struct Timeline {
  platkit::history::HostHeader host;  // the host as of the last sample
  int64_t first = 0;
  int64_t last = 0;
  size_t samples = 0;
  uint64_t bytes = 0;
  size_t reboots = 0;
  size_t damagedParts = 0;
  std::map<std::string, TimelineDay> days;  // by the day in UTC, such as 2026-11-21
  std::vector<TimelineEvent> events;        // in the order of recording
};

// Reads the heads of all frames in the segments from the second `from` to the second `to`. Throws a Failure.
Timeline ReadTimeline(const std::string &folder, int64_t from = INT64_MIN, int64_t to = INT64_MAX);

}  // namespace nodal

#endif  // NODAL_HISTORY_TIMELINE_H
