// nodal history.
#include "tests/tools/nodal/history/recorded.h"

namespace nodal {
namespace {

// The events of a history, as nodal prints them, without the header of the table.
std::string EventsOf(const Recorded &history) {
  const std::string out = Nodal("history " + history.path()).out;
  const size_t head = out.find("what happened\n");
  return head == std::string::npos ? "" : out.substr(head + 14);
}

TEST(HistoryCommand, ShowsSpanAndDays) {
  Recorded history;
  history.AddGroups(0, 100);
  history.AddGroups(86400, 86410);
  const Outcome outcome = Nodal("history " + history.path());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const size_t bytes = Contents(history.Segment(0)).size() + Contents(history.Segment(86400)).size();
  char size[32];
  std::snprintf(size, sizeof size, "%.1f KB", static_cast<double>(bytes) / 1e3);
  EXPECT_TRUE(outcome.out.starts_with(
      history.path() + ": 22 samples from 2025-11-21T03:12:00Z to 2025-11-22T03:12:05Z, " + size +
      "\nhost alpha, kernel 6.1.0-18-amd64, 0 reboots\n\nday         samples      size\n2025-11-21       20  "))
      << outcome.out;
  EXPECT_EQ(EventsOf(history), "2025-11-21T03:13:35Z  2025-11-22T03:12:00Z     86305 s  no samples were taken\n");
}

TEST(HistoryCommand, TellsWhyTimeIsMissing) {
  Recorded history;
  history.AddGroups(0, 10);
  SampleTime time = ClocksAt(10);
  const auto add = [&](int64_t wall, int64_t boot, int64_t monotonic, uint8_t marks = 0) {
    time.wall += wall * kSecond, time.boot += boot * kSecond, time.monotonic += monotonic * kSecond;
    history.Add(GroupsAt(0), {.time = time, .marks = marks});
  };
  add(0, 0, 0);
  add(605, 605, 5);  // asleep
  add(3605, 5, 5);   // set forward
  add(-3595, 5, 5);  // set back
  add(5, 5, 5);      // as usual
  add(30, 30, 30);   // late
  history.AddEnd(time);
  add(60, 60, 60, platkit::history::kRecorderStarted);
  add(90, 90, 90, platkit::history::kRecorderStarted);
  history.host().bootId[0] = std::byte{1};
  history.host().kernel = "6.1.0-19-amd64";
  time.boot = time.monotonic = 0;
  add(120, 20, 20, platkit::history::kRecorderStarted);
  add(5, 5, 5);
  EXPECT_EQ(EventsOf(history),
            "2025-11-21T03:12:10Z  2025-11-21T03:22:15Z       605 s  the host was asleep for 10 min 0 s\n"
            "2025-11-21T03:22:15Z  2025-11-21T04:22:20Z         5 s  the clock was set forward by 1 h 0 min\n"
            "2025-11-21T04:22:20Z  2025-11-21T03:22:25Z         5 s  the clock was set back by 1 h 0 min\n"
            "2025-11-21T03:22:30Z  2025-11-21T03:23:00Z        30 s  no samples were taken\n"
            "2025-11-21T03:23:00Z  2025-11-21T03:24:00Z        60 s  the recorder was stopped\n"
            "2025-11-21T03:24:00Z  2025-11-21T03:25:30Z        90 s  the recorder ended unexpectedly\n"
            "2025-11-21T03:25:30Z  2025-11-21T03:27:30Z       120 s  the host was rebooted; "
            "the kernel changed from 6.1.0-18-amd64 to 6.1.0-19-amd64\n");
  EXPECT_NE(Nodal("history " + history.path()).out.find("kernel 6.1.0-19-amd64, 1 reboot\n"), std::string::npos);
}

// Thinned samples are about a minute apart, which does not count as a gap.
TEST(HistoryCommand, KnowsThinnedSamples) {
  Recorded history;
  for (const int64_t second : {0, 55, 170, 300})
    history.Add(GroupsAt(second), {.time = ClocksAt(second), .marks = platkit::history::kThinned});
  EXPECT_EQ(EventsOf(history), "2025-11-21T03:14:50Z  2025-11-21T03:17:00Z       130 s  no samples were taken\n");
}

TEST(HistoryCommand, ShowsJson) {
  Recorded history;
  history.AddGroups(0, 5);
  history.AddGroups(20, 25);
  const size_t bytes = Contents(history.Segment(0)).size();
  EXPECT_EQ(Nodal("history --json " + history.path()).out, R"({
  "host": "alpha",
  "kernel": "6.1.0-18-amd64",
  "first": "2025-11-21T03:12:00Z",
  "last": "2025-11-21T03:12:20Z",
  "samples": 2,
  "bytes": )" + std::to_string(bytes) + R"(,
  "reboots": 0,
  "damagedParts": 0,
  "days": {
    "2025-11-21": {
      "samples": 2,
      "bytes": )" + std::to_string(bytes) + R"(
    }
  },
  "events": [
    {
      "from": "2025-11-21T03:12:00Z",
      "to": "2025-11-21T03:12:20Z",
      "seconds": 20.0,
      "reasons": "no samples were taken"
    }
  ]
}
)");
}

TEST(HistoryCommand, NeedsAHistory) {
  Recorded history;
  const Outcome outcome = Nodal("history " + history.path());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: " + history.path() + ": no history in this folder\n");
}

}  // namespace
}  // namespace nodal
