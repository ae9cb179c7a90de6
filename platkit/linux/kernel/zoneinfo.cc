#include "platkit/linux/kernel/zoneinfo.h"

#include <algorithm>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Parses "(0, 3019, 5067)".
Figure HighestOf(std::string_view list) {
  uint64_t highest = 0;
  TextScanner numbers(TextScanner(list.substr(std::min(list.find('(') + 1, list.size()))).TakeUntil(')'));
  while (!numbers.AtEnd()) {
    uint64_t number = 0;
    if (!ParseNumber(numbers.TakeUntil(','), number)) return Figure::Unreadable();
    highest = std::max(highest, number);
  }
  return Figure(highest);
}

void TakeZoneLine(std::string_view line, Zone &zone) {
  TextScanner scanner(line);
  scanner.SkipBlanks();
  scanner.Take("pages ");
  const WantedFigure wanted[] = {
      {"present", &zone.present}, {"managed", &zone.managed}, {"free", &zone.free},   {"min", &zone.min},
      {"low", &zone.low},         {"high", &zone.high},       {"promo", &zone.promo},
  };
  std::string_view key, rest;
  if (!SplitKey(scanner.rest(), key, rest)) return;
  TakeFigure(key, rest, wanted);
  if (key == "protection") zone.protection = HighestOf(rest);
}

// The name of the zone that starts with a line such as "Node 0, zone Normal". Empty if the line does not start a zone.
std::string_view ZoneName(std::string_view line) {
  constexpr std::string_view kWord = ", zone ";
  const size_t word = line.find(kWord);
  if (!line.starts_with("Node ") || word == std::string_view::npos) return {};
  TextScanner scanner(line.substr(word + kWord.size()));
  scanner.SkipBlanks();
  return scanner.rest();
}

}  // namespace

bool IsLowZone(std::string_view zone) { return zone == "DMA" || zone == "DMA32"; }

Zoneinfo ReadZoneinfo(HostFiles &files) {
  Zoneinfo info;
  bool inZone = false;  // false in the lines of a node, and of the per-CPU page sets of a zone
  LineReader lines(files, HostPath("proc/zoneinfo"));
  for (std::string_view line; lines.Next(line);) {
    if (const std::string_view name = ZoneName(line); !name.empty()) {
      inZone = info.zones.size() < kMaxZones;
      if (inZone) info.zones.emplace_back().isLow = IsLowZone(name);
    } else if (line.starts_with("  pagesets")) {
      inZone = false;
    } else if (inZone) {
      TakeZoneLine(line, info.zones.back());
    }
  }
  info.isComplete = lines.status() == HVC_OK;
  return info;
}

}  // namespace platkit
