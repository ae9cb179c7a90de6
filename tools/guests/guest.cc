#include "tools/guests/guest.h"

#include <algorithm>

namespace guests {
namespace {

using nlohmann::json;

// 2^50 bytes: more than any guest has, and so little that sums do not overflow.
constexpr uint64_t kMaxKB = uint64_t{1} << 40;

// A driver answers within this time after a poll.
constexpr uint64_t kAnswerSeconds = 2;

constexpr GuestFigure kStatistics[] = {GuestFigure::kTotal,           GuestFigure::kFree,
                                       GuestFigure::kUsable,          GuestFigure::kDiskCaches,
                                       GuestFigure::kSwappedIn,       GuestFigure::kSwappedOut,
                                       GuestFigure::kMajorFaults,     GuestFigure::kHugePagesAllocated,
                                       GuestFigure::kHugePagesRefused};

bool IsValue(Figure figure) { return figure.Cell(HVC_KB_NONE) != HVC_KB_NONE; }

json JsonOf(Figure figure) { return IsValue(figure) ? json(figure.Cell(0)) : json(); }

Figure FigureIn(const json &object, const std::string &key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number_unsigned() ? Figure(found->get<uint64_t>()) : Figure();
}

}  // namespace

json ToJson(const Guest &guest) {
  json object = {{"monitor", guest.monitor},
                 {"id", guest.id},
                 {"name", guest.name},
                 {"answered", guest.hasAnswered},
                 {"pid", guest.figures.pid},
                 {"start-ticks", guest.figures.startTicks},
                 {"balloon-device", JsonOf(guest.hasBalloon)},
                 {"polling-seconds", JsonOf(guest.pollingSeconds)},
                 {"last-update", JsonOf(guest.lastUpdate)}};
  for (size_t i = 0; i < platkit::kGuestFigures; ++i) {
    const auto figure = static_cast<GuestFigure>(i);
    if (IsValue(guest.figures[figure])) object[std::string(KeyOf(figure))] = guest.figures[figure].Cell(0);
  }
  return object;
}

Guest FromJson(const json &object) {
  Guest guest;
  guest.monitor = object.at("monitor").get<std::string>();
  guest.id = object.at("id").get<std::string>();
  guest.name = object.at("name").get<std::string>();
  guest.hasAnswered = object.at("answered").get<bool>();
  guest.figures.pid = object.at("pid").get<int64_t>();
  guest.figures.startTicks = object.at("start-ticks").get<uint64_t>();
  guest.hasBalloon = FigureIn(object, "balloon-device");
  guest.pollingSeconds = FigureIn(object, "polling-seconds");
  guest.lastUpdate = FigureIn(object, "last-update");
  for (size_t i = 0; i < platkit::kGuestFigures; ++i) {
    const auto figure = static_cast<GuestFigure>(i);
    guest.figures[figure] = FigureIn(object, std::string(KeyOf(figure)));
  }
  return guest;
}

void TakeBytes(Guest &guest, GuestFigure figure, uint64_t bytes) { TakeKB(guest, figure, bytes / 1024); }

void TakeKB(Guest &guest, GuestFigure figure, uint64_t kb) {
  if (kb <= kMaxKB) guest.figures[figure] = Figure(kb);
}

// A guest that does not report a count gives -1, which is above INT64_MAX here.
void TakeCount(Guest &guest, GuestFigure figure, uint64_t count) {
  if (count <= INT64_MAX) guest.figures[figure] = Figure(count);
}

void TakeBalloon(Guest &guest, Figure memoryKB, Figure leftKB) {
  if (IsValue(memoryKB)) TakeKB(guest, GuestFigure::kMemory, memoryKB.Cell(0));
  if (guest.hasBalloon == Figure(0)) {
    guest.figures[GuestFigure::kBalloon] = Figure(0);
  } else if (IsValue(memoryKB) && IsValue(leftKB) && leftKB.Cell(0) <= memoryKB.Cell(0)) {
    TakeKB(guest, GuestFigure::kBalloon, (memoryKB - leftKB).Cell(0));
  }
}

void Merge(Guest &guest, const Guest &later) {
  guest.hasAnswered = guest.hasAnswered || later.hasAnswered;
  guest.hasBalloon = later.hasBalloon.IfAbsent(guest.hasBalloon);
  guest.pollingSeconds = later.pollingSeconds.IfAbsent(guest.pollingSeconds);
  guest.lastUpdate = later.lastUpdate.IfAbsent(guest.lastUpdate);
  for (size_t i = 0; i < platkit::kGuestFigures; ++i)
    guest.figures.figures[i] = later.figures.figures[i].IfAbsent(guest.figures.figures[i]);
}

bool HasCurrentStatistics(const Guest &guest, std::chrono::system_clock::time_point now) {
  using std::chrono::seconds;
  const uint64_t polling = guest.pollingSeconds.Cell(0);
  const uint64_t updated = guest.lastUpdate.Cell(0);
  const auto clock = std::chrono::duration_cast<seconds>(now.time_since_epoch()).count();
  if (polling == 0 || updated == 0 || clock < 0) return false;
  // QEMU may be a second ahead: both clocks are truncated to seconds.
  const auto present = static_cast<uint64_t>(clock);
  return updated <= present + 1 && present - std::min(updated, present) <= polling + kAnswerSeconds;
}

void Settle(Guest &guest, std::chrono::system_clock::time_point now) {
  const Figure balloon = guest.figures[GuestFigure::kBalloon];
  // Only a driver can fill the balloon and report statistics.
  if (guest.hasBalloon == Figure(0)) {
    guest.figures[GuestFigure::kBalloonDriver] = Figure(0);
    guest.figures[GuestFigure::kBalloonTarget] = Figure(0);
  } else if (guest.lastUpdate.Cell(0) > 0 || balloon.Cell(0) > 0) {
    guest.figures[GuestFigure::kBalloonDriver] = Figure(1);
  } else if (guest.lastUpdate == Figure(0) && guest.pollingSeconds.Cell(0) > 0) {
    guest.figures[GuestFigure::kBalloonDriver] = Figure(0);
  }
  if (HasCurrentStatistics(guest, now)) return;
  for (const GuestFigure statistic : kStatistics)
    guest.figures[statistic] = Figure();
}

}  // namespace guests
