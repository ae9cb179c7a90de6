#include "tools/guests/text.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

#include "tools/nodal/support/text.h"

namespace guests {
namespace {

using std::chrono::system_clock;

constexpr char kUnknown[] = "-";

std::string TextOf(Figure figure) {
  const uint64_t value = figure.Cell(HVC_KB_NONE);
  return value == HVC_KB_NONE ? kUnknown : std::to_string(value);
}

std::string YesOrNo(Figure figure) {
  if (figure.isAbsent()) return kUnknown;
  return figure == Figure(0) ? "no" : "yes";
}

// Seconds since the guest last reported its statistics.
std::string AgeOf(const Guest &guest, system_clock::time_point now) {
  const uint64_t updated = guest.lastUpdate.Cell(0);
  if (updated == 0) return kUnknown;
  const auto clock = std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
  const auto present = static_cast<uint64_t>(std::max<int64_t>(clock, 0));
  return std::to_string(present - std::min(updated, present));
}

using Cells = std::vector<std::string>;

const Cells kHeadings = {"NAME", "PID", "MEMORY", "BALLOON", "DRIVER", "TOTAL", "USABLE", "FREE", "CACHES", "AGE"};

Cells CellsOf(const Guest &guest, system_clock::time_point now) {
  const platkit::GuestFigures &figures = guest.figures;
  return {nodal::Printable(guest.name),
          figures.pid == 0 ? kUnknown : std::to_string(figures.pid),
          TextOf(figures[GuestFigure::kMemory]),
          TextOf(figures[GuestFigure::kBalloon]),
          YesOrNo(figures[GuestFigure::kBalloonDriver]),
          TextOf(figures[GuestFigure::kTotal]),
          TextOf(figures[GuestFigure::kUsable]),
          TextOf(figures[GuestFigure::kFree]),
          TextOf(figures[GuestFigure::kDiskCaches]),
          AgeOf(guest, now)};
}

// The first column is aligned to the left, the others to the right.
std::string LineOf(const Cells &cells, const std::vector<size_t> &widths) {
  std::string line = cells[0] + std::string(widths[0] - cells[0].size(), ' ');
  for (size_t i = 1; i < cells.size(); ++i)
    line += "  " + std::string(widths[i] - cells[i].size(), ' ') + cells[i];
  return line + '\n';
}

// The name of a guest for virsh, or its UUID if a shell could interpret the name.
std::string NameForShell(const Guest &guest) {
  const auto isSafe = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
           c == '.';
  };
  const bool isPlain = !guest.name.empty() && guest.name[0] != '-' && std::ranges::all_of(guest.name, isSafe);
  return isPlain ? guest.name : guest.id;
}

// The command that turns on polling every ten seconds.
std::string PollingCommand(const Guest &guest) {
  if (guest.monitor == "libvirt") return "virsh dommemstat --period 10 " + NameForShell(guest) + " --live";
  const nlohmann::json command = {
      {"execute", "qom-set"},
      {"arguments", {{"path", guest.id}, {"property", "guest-stats-polling-interval"}, {"value", 10}}}};
  return nodal::Printable(command.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

std::string AdviceOn(const Guest &guest, system_clock::time_point now) {
  const std::string name = nodal::Printable(guest.name);
  if (!guest.hasAnswered) return name + ": its monitor does not answer.\n";
  if (guest.hasBalloon == Figure(0)) return name + ": it has no balloon device, so it cannot report figures.\n";
  if (guest.pollingSeconds == Figure(0)) {
    const std::string where = guest.monitor == "libvirt" ? "run" : "send this to its QMP socket";
    return name + ": its statistics are not polled. To poll them every 10 seconds, " + where + ":\n  " +
           PollingCommand(guest) + "\n";
  }
  if (HasCurrentStatistics(guest, now)) return {};
  if (guest.lastUpdate.Cell(0) == 0) return name + ": its balloon driver has never reported figures.\n";
  return name + ": its balloon driver last reported figures " + AgeOf(guest, now) + " seconds ago.\n";
}

}  // namespace

std::string Table(std::span<const Guest> guests, system_clock::time_point now) {
  std::vector<Cells> lines = {kHeadings};
  for (const Guest &guest : guests)
    lines.push_back(CellsOf(guest, now));
  std::vector<size_t> widths(kHeadings.size());
  for (const Cells &line : lines) {
    for (size_t i = 0; i < line.size(); ++i)
      widths[i] = std::max(widths[i], line[i].size());
  }
  std::string text;
  for (const Cells &line : lines)
    text += LineOf(line, widths);
  return text;
}

std::string Advice(std::span<const Guest> guests, system_clock::time_point now) {
  std::string text;
  for (const Guest &guest : guests)
    text += AdviceOn(guest, now);
  return text;
}

}  // namespace guests
