#include "tools/guests/sample.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "platkit/linux/kernel/uptime.h"
#include "tools/guests/child.h"
#include "tools/guests/libvirt.h"
#include "tools/guests/qmp.h"

namespace guests {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using std::chrono::system_clock;

uint64_t Uptime() {
  platkit::HostFiles files("/", platkit::Reach::kHost);
  return ReadUptime(files).Cell(0);
}

// Collects the guests and failures that the children report.
class Collector {
 public:
  // Called with each line of the child for a source.
  void Take(const std::string &source, std::string_view line) {
    const nlohmann::json message = nlohmann::json::parse(line, nullptr, false);
    if (message.contains("error")) {
      failures_[source] = message["error"].get<std::string>();
      return;
    }
    const Guest guest = FromJson(message);
    const auto [known, isNew] = guests_.try_emplace({guest.monitor, guest.id}, guest);
    if (!isNew) Merge(known->second, guest);
  }

  void Fail(const std::string &source, const std::string &failure) { failures_.try_emplace(source, failure); }

  std::vector<Guest> Guests() const {
    std::vector<Guest> guests;
    for (const auto &[key, guest] : guests_)
      guests.push_back(guest);
    for (Guest &guest : guests)
      Settle(guest, system_clock::now());
    std::ranges::sort(guests, {}, &Guest::name);
    return guests;
  }

  std::vector<std::string> Failures() const {
    std::vector<std::string> lines;
    for (const auto &[source, failure] : failures_)
      lines.push_back(std::string(source).append(": ").append(failure));
    for (const auto &[key, guest] : guests_) {
      if (!guest.hasAnswered) lines.push_back("guest " + guest.name + ": its monitor does not answer");
    }
    return lines;
  }

  size_t FailedSources() const { return failures_.size(); }

  bool HasGuestOf(const std::string &monitor) const {
    return std::ranges::any_of(guests_, [&](const auto &entry) { return entry.first.first == monitor; });
  }

 private:
  std::map<std::pair<std::string, std::string>, Guest> guests_;
  std::map<std::string, std::string> failures_;
};

bool IsRunning(const Children &children, const std::string &name) {
  const std::vector<std::string> running = children.Running();
  return std::ranges::find(running, name) != running.end();
}

// If libvirt's call for all guests takes longer than the deadline divided by this number, guests are also asked one by
// one. The call takes that long only if a guest is stuck.
constexpr int kOneByOneAfter = 3;

// Reports a source that gave no answer at all as a failure. If only some guests do not answer, libvirt has not failed.
void FailIfSilent(const Children &children, const std::string &source, const std::string &monitor,
                  Collector &collector) {
  if (IsRunning(children, source) && !collector.HasGuestOf(monitor)) collector.Fail(source, "no answer");
}

void AskAll(const Monitors &monitors, milliseconds deadline, Collector &collector) {
  const auto start = steady_clock::now();
  Children children([&](const std::string &name, std::string_view line) { collector.Take(name, line); });
  if (monitors.libvirt)
    children.Start(*monitors.libvirt, [&](const Report &report) { AskLibvirtAtOnce(*monitors.libvirt, report); });
  for (const std::string &path : monitors.qmp) {
    if (IsSocketOfLibvirt(path)) {
      collector.Fail(path, "this socket belongs to libvirt and is not used");
    } else {
      children.Start(path, [path](const Report &report) { AskQmp(path, report); });
    }
  }
  children.ReceiveUntil(start + deadline / kOneByOneAfter);
  if (monitors.libvirt && IsRunning(children, *monitors.libvirt))
    children.Start(*monitors.libvirt, [&](const Report &report) { AskLibvirtOneByOne(*monitors.libvirt, report); });
  children.ReceiveUntil(start + deadline);
  if (monitors.libvirt) FailIfSilent(children, *monitors.libvirt, "libvirt", collector);
  for (const std::string &path : monitors.qmp)
    FailIfSilent(children, path, path, collector);
}

}  // namespace

Sample TakeSample(const Monitors &monitors, milliseconds deadline) {
  Sample sample{.uptime = Uptime()};
  Collector collector;
  AskAll(monitors, deadline, collector);
  sample.guests = collector.Guests();
  sample.failures = collector.Failures();
  sample.isEmpty = collector.FailedSources() == monitors.qmp.size() + (monitors.libvirt ? 1 : 0);
  return sample;
}

}  // namespace guests
