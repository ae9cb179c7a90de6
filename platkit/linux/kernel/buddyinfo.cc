#include "platkit/linux/kernel/buddyinfo.h"

#include <set>
#include <utility>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/zoneinfo.h"

namespace platkit {
namespace {

// These limits are higher than any host needs.
constexpr uint64_t kMaxNumaNodes = 4096;
constexpr size_t kMaxOrders = 64;

// Parses "Node 0, zone Normal 1 6928 4248". Returns false if the line has another form.
bool ParseZone(std::string_view line, BuddyZone &zone) {
  TextScanner scanner(line);
  if (scanner.TakeWord() != "Node") return false;
  scanner.SkipBlanks();
  if (!scanner.TakeNumber(zone.numaNode) || zone.numaNode >= kMaxNumaNodes) return false;
  if (!scanner.Take(",") || scanner.TakeWord() != "zone") return false;
  zone.zone = scanner.TakeWord();
  for (std::string_view count = scanner.TakeWord(); !count.empty(); count = scanner.TakeWord()) {
    if (zone.free.size() < kMaxOrders) zone.free.push_back(ParseFigure(count));
  }
  return !zone.zone.empty();
}

}  // namespace

Buddyinfo ReadBuddyinfo(HostFiles &files) {
  Buddyinfo info;
  std::set<std::pair<uint64_t, std::string>> known;
  LineReader lines(files, HostPath("proc/buddyinfo"));
  for (std::string_view line; lines.Next(line);) {
    BuddyZone zone;
    if (info.zones.size() == kMaxZones || !ParseZone(line, zone)) continue;
    if (known.emplace(zone.numaNode, zone.zone).second) info.zones.push_back(std::move(zone));
  }
  info.status = lines.status();
  return info;
}

}  // namespace platkit
