#include "platkit/linux/kernel/zoneinfo.h"

#include <algorithm>
#include <optional>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// In pages.
struct Zone {
  bool isLow = false;
  Figure present, managed, free, min, low, high, promo;
  Figure protection = Figure(0);  // the highest of those against the allocations that other zones are meant for
};

// "(0, 3019, 5067)"
Figure HighestOf(std::string_view list) {
  uint64_t highest = 0;
  list = list.substr(0, list.find(')'));
  list.remove_prefix(std::min<size_t>(list.find('(') + 1, list.size()));
  while (!list.empty()) {
    const std::string_view item = list.substr(0, list.find(','));
    list.remove_prefix(std::min(item.size() + 1, list.size()));
    uint64_t value = 0;
    if (!ParseNumber(item, value)) return Figure::Unreadable();
    highest = std::max(highest, value);
  }
  return Figure(highest);
}

void TakeLine(std::string_view line, Zone &zone) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  if (line.starts_with("pages ")) line.remove_prefix(6);
  const WantedFigure wanted[] = {
      {"present", &zone.present}, {"managed", &zone.managed}, {"free", &zone.free},   {"min", &zone.min},
      {"low", &zone.low},         {"high", &zone.high},       {"promo", &zone.promo},
  };
  std::string_view key, rest;
  if (!SplitKey(line, key, rest)) return;
  TakeFigure(key, rest, wanted);
  if (key == "protection") zone.protection = HighestOf(rest);
}

// A zone without memory has watermarks all the same, which nothing ever meets.
void AddZone(const Zone &zone, ZoneTotals &totals) {
  const auto add = [](Figure &total, Figure part) { total = total + part.IfAbsent(Figure::Unreadable()); };
  add(totals.present, zone.present);
  if (zone.managed == Figure(0)) return;
  add(totals.free, zone.free);
  add(totals.min, zone.min);
  add(totals.low, zone.low);
  add(totals.high, zone.high);
  add(totals.ample, zone.promo.IfAbsent(zone.high + (zone.high - zone.low)));  // before Linux 5.18
  if (zone.isLow) add(totals.lowReserve, Lower(zone.protection, zone.managed));
}

// The zone that a line such as "Node 0, zone  Normal" starts; empty if it starts none.
std::string_view ZoneOf(std::string_view line) {
  constexpr std::string_view kWord = ", zone ";
  const size_t word = line.find(kWord);
  if (!line.starts_with("Node ") || word == std::string_view::npos) return {};
  line.remove_prefix(word + kWord.size());
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  return line;
}

}  // namespace

bool IsLowZone(std::string_view zone) { return zone == "DMA" || zone == "DMA32"; }

ZoneTotals ReadZones(HostFiles &files, PageSize &pageSize) {
  ZoneTotals totals;
  std::optional<Zone> zone;
  bool ofZone = false;  // and not of the node, nor of the processors' share of the zone
  LineReader lines(files, HostPath("proc/zoneinfo"));
  for (std::string_view line; lines.Next(line);) {
    if (const std::string_view name = ZoneOf(line); !name.empty()) {
      if (zone) AddZone(*zone, totals);
      zone.emplace().isLow = IsLowZone(name);
      ofZone = true;
    } else if (line.starts_with("  pagesets")) {
      ofZone = false;
    } else if (ofZone) {
      TakeLine(line, *zone);
    }
  }
  if (zone) AddZone(*zone, totals);
  const bool complete = lines.status() == HVC_OK;
  for (Figure *figure :
       {&totals.present, &totals.free, &totals.min, &totals.low, &totals.high, &totals.ample, &totals.lowReserve}) {
    *figure = complete ? figure->IfAbsent(Figure::Unreadable()) * pageSize.KB() : Figure::Unreadable();
  }
  return totals;
}

}  // namespace platkit
