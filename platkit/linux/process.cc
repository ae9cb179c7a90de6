#include "platkit/linux/process.h"

#include "platkit/linux/figure_files.h"

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

}  // namespace

HVC_ReturnStatus ReadProcessStatus(HostFiles &files, int64_t pid, ProcessStatus &status) {
  status = {};
  const WantedFigure wanted[] = {
      {"VmSize", &status.size},        {"VmPeak", &status.sizePeak},        {"VmRSS", &status.resident},
      {"VmHWM", &status.residentPeak}, {"HugetlbPages", &status.hugePages}, {"VmPTE", &status.pageTables},
  };
  Kind kind;
  LineReader lines(files, HostPath("proc/", pid, "/status"));
  std::string_view line, key, rest;
  while (lines.Next(line)) {
    if (!SplitKey(line, key, rest)) continue;
    TakeLine(key, rest, pid, kind, status);
    TakeFigure(key, rest, wanted);
  }
  if (lines.status() == HVC_NOT_FOUND) return HVC_NOT_FOUND;
  if (lines.status() == HVC_OK) {
    if (!kind.hasMemory || kind.isKernelThread || kind.isZombie || kind.isThread) return HVC_NOT_FOUND;
    status.hugePages = status.hugePages.IfAbsent(Figure(0));  // a kernel built without them
  }
  for (const WantedFigure &want : wanted)
    *want.figure = want.figure->IfAbsent(Figure::Unreadable());
  return HVC_OK;
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
