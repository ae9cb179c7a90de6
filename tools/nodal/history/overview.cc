#include "tools/nodal/history/overview.h"

#include <cstdio>

#include "platkit/history/moment.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::TimeText;

std::string SizeText(uint64_t bytes) {
  char text[32];
  const auto amount = static_cast<double>(bytes);
  if (bytes >= 1'000'000'000) {
    std::snprintf(text, sizeof text, "%.1f GB", amount / 1e9);
  } else if (bytes >= 1'000'000) {
    std::snprintf(text, sizeof text, "%.1f MB", amount / 1e6);
  } else if (bytes >= 1000) {
    std::snprintf(text, sizeof text, "%.1f KB", amount / 1e3);
  } else {
    std::snprintf(text, sizeof text, "%llu B", static_cast<unsigned long long>(bytes));
  }
  return text;
}

std::string SecondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%8.0f s", seconds);
  return text;
}

void PrintDays(const Timeline &timeline) {
  Print("\nday         samples      size\n");
  for (const auto &[day, total] : timeline.days) {
    char line[64];
    std::snprintf(line, sizeof line, "%-10s  %7zu  %8s\n", day.c_str(), total.samples, SizeText(total.bytes).c_str());
    Print(line);
  }
}

void PrintEvents(const Timeline &timeline) {
  if (timeline.events.empty()) return;
  Print("\nfrom                  to                      passed  what happened\n");
  for (const TimelineEvent &event : timeline.events)
    Print(TimeText(event.from) + "  " + TimeText(event.to) + "  " + SecondsText(event.seconds) + "  " +
          Printable(event.reasons) + "\n");
}

}  // namespace

void PrintOverview(const std::string &folder, const Timeline &timeline) {
  Print(Printable(folder) + ": " + Plural(timeline.samples, "sample") + " from " + TimeText(timeline.first) + " to " +
        TimeText(timeline.last) + ", " + SizeText(timeline.bytes) + "\n");
  Print("host " + Printable(timeline.host.host) + ", kernel " + Printable(timeline.host.kernel) + ", " +
        Plural(timeline.reboots, "reboot"));
  Print(timeline.damagedParts == 0 ? "\n" : ", " + Plural(timeline.damagedParts, "damaged part") + "\n");
  PrintDays(timeline);
  PrintEvents(timeline);
}

void PrintOverviewAsJson(const Timeline &timeline) {
  OrderedJson days = OrderedJson::object(), events = OrderedJson::array();
  for (const auto &[day, total] : timeline.days)
    days[day] = {{"samples", total.samples}, {"bytes", total.bytes}};
  for (const TimelineEvent &event : timeline.events)
    events.push_back({{"from", TimeText(event.from)},
                      {"to", TimeText(event.to)},
                      {"seconds", event.seconds},
                      {"reasons", TextToJson(event.reasons)}});
  const OrderedJson json = {{"host", TextToJson(timeline.host.host)},
                            {"kernel", TextToJson(timeline.host.kernel)},
                            {"first", TimeText(timeline.first)},
                            {"last", TimeText(timeline.last)},
                            {"samples", timeline.samples},
                            {"bytes", timeline.bytes},
                            {"reboots", timeline.reboots},
                            {"damagedParts", timeline.damagedParts},
                            {"days", days},
                            {"events", events}};
  Print(json.dump(2, ' ', true) + "\n");
}

}  // namespace nodal
