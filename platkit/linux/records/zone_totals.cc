#include "platkit/linux/records/zone_totals.h"

namespace platkit {
namespace {

// The watermarks of a zone without memory have no effect.
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

}  // namespace

ZoneTotals TotalsInKB(const Zoneinfo &info, PageSize &pageSize) {
  ZoneTotals totals;
  for (const Zone &zone : info.zones)
    AddZone(zone, totals);
  for (Figure *figure :
       {&totals.present, &totals.free, &totals.min, &totals.low, &totals.high, &totals.ample, &totals.lowReserve}) {
    *figure = info.isComplete ? figure->IfAbsent(Figure::Unreadable()) * pageSize.KB() : Figure::Unreadable();
  }
  return totals;
}

}  // namespace platkit
