#include "tools/guests/qmp.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "platkit/linux/kernel/process_stat.h"
#include "tools/guests/guest.h"
#include "tools/guests/qmp_client.h"

namespace guests {
namespace {

using nlohmann::json;

// The member of an object, if it is a number that is not negative; absent otherwise.
Figure NumberIn(const json &object, const char *key) {
  if (!object.is_object()) return {};
  const auto found = object.find(key);
  return found != object.end() && found->is_number_unsigned() ? Figure(found->get<uint64_t>()) : Figure();
}

std::string TextIn(const json &object, const char *key) {
  if (!object.is_object()) return {};
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

const json &MemberOf(const json &object, const char *key) {
  static const json kNone;
  if (!object.is_object()) return kNone;
  const auto found = object.find(key);
  return found == object.end() ? kNone : *found;
}

bool IsKnown(Figure figure) { return !figure.isAbsent() && figure != Figure::Unreadable(); }

void TakeStatistics(Guest &guest, const json &answer) {
  struct KnownStatistic {
    const char *key;
    GuestFigure figure;
    void (*take)(Guest &, GuestFigure, uint64_t);
  };
  static constexpr KnownStatistic kKnown[] = {
      {"stat-total-memory", GuestFigure::kTotal, TakeBytes},
      {"stat-free-memory", GuestFigure::kFree, TakeBytes},
      {"stat-available-memory", GuestFigure::kUsable, TakeBytes},
      {"stat-disk-caches", GuestFigure::kDiskCaches, TakeBytes},
      {"stat-swap-in", GuestFigure::kSwappedIn, TakeBytes},
      {"stat-swap-out", GuestFigure::kSwappedOut, TakeBytes},
      {"stat-major-faults", GuestFigure::kMajorFaults, TakeCount},
      {"stat-htlb-pgalloc", GuestFigure::kHugePagesAllocated, TakeCount},
      {"stat-htlb-pgfail", GuestFigure::kHugePagesRefused, TakeCount},
  };
  guest.lastUpdate = NumberIn(answer, "last-update");
  const json &statistics = MemberOf(answer, "stats");
  for (const KnownStatistic &known : kKnown) {
    if (const Figure value = NumberIn(statistics, known.key); IsKnown(value))
      known.take(guest, known.figure, value.Cell(0));
  }
}

// The path of the balloon device; empty if there is none.
std::string FindBalloon(QmpClient &qemu) {
  for (const std::string folder : {"/machine/peripheral", "/machine/peripheral-anon"}) {
    const json devices = qemu.Execute("qom-list", {{"path", folder}});
    if (!devices.is_array()) continue;
    for (const json &device : devices) {
      if (TextIn(device, "type").starts_with("child<virtio-balloon")) return folder + "/" + TextIn(device, "name");
    }
  }
  return {};
}

// "actual" is the memory that the balloon leaves to the guest.
void TakeMemory(Guest &guest, QmpClient &qemu) {
  guest.id = FindBalloon(qemu);
  guest.hasBalloon = Figure(guest.id.empty() ? 0 : 1);
  const json summary = qemu.Execute("query-memory-size-summary");
  const Figure memory = NumberIn(summary, "base-memory") + NumberIn(summary, "plugged-memory");
  TakeBalloon(guest, memory / 1024, NumberIn(qemu.Execute("query-balloon"), "actual") / 1024);
}

void TakeDriver(Guest &guest, QmpClient &qemu) {
  if (guest.id.empty()) return;
  const auto property = [&](const char *name) {
    return qemu.Execute("qom-get", {{"path", guest.id}, {"property", name}});
  };
  const json polling = property("guest-stats-polling-interval");
  if (polling.is_number_unsigned()) guest.pollingSeconds = Figure(polling.get<uint64_t>());
  TakeStatistics(guest, property("guest-stats"));
}

bool IsInProgress(const std::string &status) {
  constexpr std::string_view kEnds[] = {"", "none", "completed", "failed", "cancelled"};
  return std::ranges::find(kEnds, status) == std::end(kEnds);
}

void TakeMigration(Guest &guest, QmpClient &qemu) {
  const json migration = qemu.Execute("query-migrate");
  const json &memory = MemberOf(migration, "ram");
  guest.figures[GuestFigure::kWritten] = Figure(0);
  if (!IsInProgress(TextIn(migration, "status")) || !memory.is_object()) return;
  const auto take = [&](const char *key, GuestFigure figure, auto takeValue) {
    guest.figures[figure] = Figure();
    if (const Figure value = NumberIn(memory, key); IsKnown(value)) takeValue(guest, figure, value.Cell(0));
  };
  take("transferred", GuestFigure::kWritten, TakeBytes);
  take("remaining", GuestFigure::kLeftToWrite, TakeBytes);
  take("dirty-pages-rate", GuestFigure::kDirtyRate, TakeCount);
}

// Reads the start time of the process before it asks the monitor. If the same process then answers, it still existed.
Guest AskPath(const std::string &path) {
  QmpClient qemu(path);
  platkit::HostFiles files("/", platkit::Reach::kHost);
  Guest guest{.monitor = path, .hasAnswered = true};
  guest.figures.pid = qemu.ServerPid();
  const Figure start = ReadStartTicks(files, guest.figures.pid);
  if (!IsKnown(start)) guest.figures.pid = 0;
  guest.figures.startTicks = start.Cell(0);
  guest.name = TextIn(qemu.Execute("query-name"), "name");
  TakeMemory(guest, qemu);
  TakeDriver(guest, qemu);
  TakeMigration(guest, qemu);
  return guest;
}

}  // namespace

bool IsSocketOfLibvirt(const std::string &path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
  const std::string_view resolved = real == nullptr ? std::string_view(path) : real.get();
  return resolved.starts_with("/var/lib/libvirt/") || resolved.starts_with("/run/libvirt/") ||
         resolved.ends_with("/monitor.sock");
}

void AskQmp(const std::string &path, const Report &report) {
  json line;
  try {
    line = ToJson(AskPath(path));
  } catch (const std::exception &failure) {
    line = {{"error", failure.what()}};
  }
  report.Line(line.dump(-1, ' ', false, json::error_handler_t::replace));
}

}  // namespace guests
