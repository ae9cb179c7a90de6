#include "platkit/linux/groups/vm_monitors.h"

#include <algorithm>

#include "platkit/linux/kernel/process_stat.h"

namespace platkit {
namespace {

Figure UnknownIfAbsent(Figure figure) { return figure.IfAbsent(Figure::Unreadable()); }

// Whether `figure` is at most `bound`. Returns false unless both are values.
bool IsAtMost(Figure figure, Figure bound) {
  const uint64_t value = figure.Cell(HVC_KB_NONE);
  const uint64_t limit = bound.Cell(HVC_KB_NONE);
  return limit != HVC_KB_NONE && value <= limit;
}

// libvirt writes its status file at each change of the balloon, so the size in it is newer than the size in the file of
// nodal-guests(1).
Figure BalloonSize(const LibvirtStatus &status, const GuestFigures &figures) {
  if (status.hasBalloon == Figure(0)) return Figure(0);
  const bool isKnown = IsAtMost(status.currentMemory, status.memory);
  return isKnown ? status.memory - status.currentMemory : figures[GuestFigure::kBalloon];
}

}  // namespace

Balloon VmMonitors::BalloonOf(Group &vm) {
  const LibvirtStatus &status = StatusOf(vm);
  const GuestFigures &figures = FiguresOf(vm);
  const Figure size = BalloonSize(status, figures);
  const bool hasNone = status.hasBalloon == Figure(0) || (size.isAbsent() && vm.vm->options.hasBalloon == Figure(0));
  if (hasNone) return {.isActive = Figure(0), .size = Figure(0), .target = Figure(0)};
  // Only a driver can fill the balloon.
  const bool isFilled = !size.isAbsent() && size != Figure(0);
  return {.isActive = isFilled ? Figure(1) : UnknownIfAbsent(figures[GuestFigure::kBalloonDriver]),
          .size = UnknownIfAbsent(size),
          .target = UnknownIfAbsent(figures[GuestFigure::kBalloonTarget])};
}

// A guest may report anything, so figures that exceed its memory are ignored.
GuestUse VmMonitors::UseOf(Group &vm, const ProcessStatus &status) {
  const GuestFigures &figures = FiguresOf(vm);
  const Figure total = figures[GuestFigure::kTotal];
  const Figure usable = figures[GuestFigure::kUsable];
  const Figure memory = vms_.GuestSize(vm, status);
  const Figure limit = memory + (vm.vm->options.maxMemory - memory);
  if (!IsAtMost(total, limit)) return {.total = Figure(), .needed = Figure::Unreadable()};
  return {.total = total, .needed = IsAtMost(usable, total) ? total - usable : Figure::Unreadable()};
}

Figure VmMonitors::CheckpointOf(Group &vm) {
  if (StatusOf(vm).hasJob == Figure(0)) return Figure(0);
  return UnknownIfAbsent(FiguresOf(vm)[GuestFigure::kWritten]);
}

const GuestFigures &VmMonitors::FiguresOf(const Group &vm) {
  static constexpr GuestFigures kUnknown;
  const std::vector<GuestFigures> &guests = guests_.Get(files_.clock(), [this] { return ReadGuestsFile(files_); });
  const auto found = std::ranges::lower_bound(guests, vm.id, {}, &GuestFigures::pid);
  const bool isFound = found != guests.end() && found->pid == vm.id;
  return isFound && ReadStartTicks(files_, vm.id) == Figure(found->startTicks) ? *found : kUnknown;
}

const LibvirtStatus &VmMonitors::StatusOf(Group &vm) {
  return vm.vm->libvirt.Get(files_.clock(), [&] {
    if (!hasLibvirt_.Get(files_.clock(), [this] { return HasLibvirtStatus(files_); })) return LibvirtStatus();
    const LibvirtStatus status = ReadLibvirtStatus(files_, vm.name);
    return status.pid == vm.id ? status : LibvirtStatus();
  });
}

}  // namespace platkit
