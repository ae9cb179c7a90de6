#include "platkit/linux/kernel/process_status.h"

#include <time.h>
#include <unistd.h>

#include <algorithm>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

struct Kind {
  bool hasMemory = false;
  bool isKernelThread = false;
  bool isZombie = false;
  bool isThread = false;
};

void TakeLine(std::string_view key, std::string_view rest, int64_t pid, Kind &kind, ProcessStatus &status) {
  uint64_t number = 0;
  if (key == "Name" && !rest.empty()) status.name = rest;
  if (key == "State") kind.isZombie = rest.starts_with('Z') || rest.starts_with('X');
  if (key == "Tgid") kind.isThread = ParseNumber(rest, number) && number != static_cast<uint64_t>(pid);
  if (key == "Kthread") kind.isKernelThread = rest == "1";
  if (key == "Threads" && ParseNumber(rest, number)) status.threads = number;
  if (key.starts_with("Vm")) kind.hasMemory = true;
}

// Leaves the figures that the file gave.
void MarkUnread(std::span<const WantedFigure> wanted) {
  for (const WantedFigure &want : wanted)
    *want.figure = want.figure->IfAbsent(Figure::Unreadable());
}

constexpr uint64_t kNanoseconds = 1'000'000'000;

uint64_t TimeSinceStart() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<uint64_t>(now.tv_sec) * kNanoseconds + static_cast<uint64_t>(now.tv_nsec);
}

// When the process that has the PID now was started: the latest time that the kernel's count of ticks allows, and the
// end of time if that is not told. "pid (name) state ...": the name may have anything in it; the count is the 20th word
// behind it.
uint64_t StartOf(HostFiles &files, int64_t pid) {
  constexpr int kCount = 20;
  char buffer[1024];
  std::string_view text;
  if (files.Read(HostPath("proc/", pid, "/stat"), buffer, text) != HVC_OK) return UINT64_MAX;
  text.remove_prefix(std::min(text.rfind(')'), text.size()));
  for (int i = 0; i < kCount; ++i) {
    const size_t blank = text.find(' ');
    if (blank == std::string_view::npos) return UINT64_MAX;
    text.remove_prefix(blank + 1);
  }
  uint64_t ticks = 0;
  if (!ParseNumber(text.substr(0, text.find(' ')), ticks)) return UINT64_MAX;
  return (ticks + 1) * (kNanoseconds / static_cast<uint64_t>(sysconf(_SC_CLK_TCK)));
}

}  // namespace

bool IsStill(HostFiles &files, int64_t pid, const ProcessIdentity &identity) {
  uint64_t inode = 0;
  const HVC_ReturnStatus status = files.Identify(HostPath("proc/", pid, "/status"), inode);
  if (status == HVC_NOT_FOUND) return false;
  // Of a process that is not for this user, nothing was read that could be another's.
  if (status != HVC_OK || identity.inode == 0) return true;
  // Two processes never have the same number. One may get another, if the kernel forgot that it had been looked at.
  return inode == identity.inode || StartOf(files, pid) <= identity.seenAt;
}

HVC_ReturnStatus ReadProcessStatus(HostFiles &files, int64_t pid, ProcessStatus &status) {
  status = {};
  status.identity.seenAt = TimeSinceStart();
  // In the kernel's order, but for those that a process must have, which come first.
  const WantedFigure wanted[] = {
      {"VmPeak", &status.sizePeak},
      {"VmSize", &status.size},
      {"VmHWM", &status.residentPeak},
      {"VmRSS", &status.resident},
      {"VmPTE", &status.pageTables},
      {"HugetlbPages", &status.hugePages},
      {"VmLck", &status.locked},
      {"VmPin", &status.pinned},
      {"RssAnon", &status.anonymous},
      {"RssFile", &status.files},
      {"RssShmem", &status.sharedMemory},
      {"VmSwap", &status.swapped},
      {"THP_enabled", &status.transparentHugePages},
  };
  constexpr size_t kRequired = 6;
  Kind kind;
  LineReader lines(files, HostPath("proc/", pid, "/status"));
  status.identity.inode = lines.inode();
  std::string_view line, key, rest;
  // What the process is stands before its memory and its threads: once all of these are told, what follows is signals,
  // capabilities and the like, a third of the file.
  for (size_t left = std::size(wanted); (left > 0 || status.threads == 0) && lines.Next(line);) {
    if (!SplitKey(line, key, rest)) continue;
    TakeLine(key, rest, pid, kind, status);
    if (TakeFigure(key, rest, wanted)) --left;
  }
  if (lines.status() == HVC_NOT_FOUND) return HVC_NOT_FOUND;
  if (lines.status() == HVC_OK) {
    if (!kind.hasMemory || kind.isKernelThread || kind.isZombie || kind.isThread) return HVC_NOT_FOUND;
    status.hugePages = status.hugePages.IfAbsent(Figure(0));  // a kernel built without them
    MarkUnread(std::span(wanted).first<kRequired>());
  } else {
    MarkUnread(wanted);
  }
  return HVC_OK;
}

// "Max address space         unlimited            unlimited            bytes": the limit in force, and the highest that
// the process may set.
Figure ReadAddressSpaceLimit(HostFiles &files, int64_t pid) {
  constexpr std::string_view kHeading = "Max address space ";
  LineReader lines(files, HostPath("proc/", pid, "/limits"));
  for (std::string_view line; lines.Next(line);) {
    if (!line.starts_with(kHeading)) continue;
    line.remove_prefix(std::min(line.find_first_not_of(' ', kHeading.size()), line.size()));
    const std::string_view limit = line.substr(0, line.find(' '));
    return limit == "unlimited" ? Figure::Unlimited() : ParseAmount(limit);
  }
  return lines.status() == HVC_NOT_FOUND ? Figure() : Figure::Unreadable();
}

// "numa_pages_migrated                          :                    0"
Figure ReadNumaMoved(HostFiles &files, int64_t pid) {
  LineReader lines(files, HostPath("proc/", pid, "/sched"));
  std::string_view line, key, rest;
  while (lines.Next(line)) {
    if (!SplitKey(line, key, rest) || key != "numa_pages_migrated") continue;
    if (rest.starts_with(':')) rest.remove_prefix(1);
    uint64_t pages = 0;
    return ParseNumber(rest, pages) ? Figure(pages) : Figure::Unreadable();
  }
  return lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND ? Figure() : Figure::Unreadable();
}

HVC_ReturnStatus ReadProcessOfThread(HostFiles &files, int64_t thread, int64_t &pid) {
  LineReader lines(files, HostPath("proc/", thread, "/status"));
  std::string_view line, key, rest;
  while (lines.Next(line)) {
    uint64_t number = 0;
    if (!SplitKey(line, key, rest) || key != "Tgid" || !ParseNumber(rest, number)) continue;
    pid = static_cast<int64_t>(number);
    return HVC_OK;
  }
  return lines.status() == HVC_OK ? HVC_NOT_FOUND : lines.status();
}

}  // namespace platkit
