#include "platkit/linux/kernel/process_status.h"

#include <time.h>

#include <span>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

struct Kind {
  bool hasMemory = false;
  bool isKernelThread = false;
  bool isZombie = false;
  bool isThread = false;
};

// "Uid:\t1000\t1000\t1000\t1000".
void TakeUserIDs(std::string_view ids, ProcessUser &user) {
  constexpr int kIDs = 4;
  TextScanner scanner(ids);
  uint64_t first = 0;
  uint64_t all = 0;
  for (int i = 0; i < kIDs; ++i) {
    uint64_t id = 0;
    if (!ParseNumber(scanner.TakeWord(), id)) return;
    if (i == 0) first = id;
    all |= id;
  }
  user.realID = first;
  user.isRootOnly = all == 0;
}

// "NSpid:\t4711\t12": one number for each PID namespace, from that of this /proc to the process's own.
bool HasSecondWord(std::string_view words) {
  TextScanner scanner(words);
  scanner.TakeWord();
  return !scanner.TakeWord().empty();
}

void TakeLine(std::string_view key, std::string_view rest, int64_t pid, Kind &kind, ProcessStatus &status) {
  uint64_t number = 0;
  if (key == "Name" && !rest.empty()) status.name = rest;
  if (key == "State") kind.isZombie = rest.starts_with('Z') || rest.starts_with('X');
  if (key == "Tgid") kind.isThread = ParseNumber(rest, number) && number != static_cast<uint64_t>(pid);
  if (key == "Uid") TakeUserIDs(rest, status.user);
  if (key == "NSpid") status.user.isContained = HasSecondWord(rest);
  if (key == "Kthread") kind.isKernelThread = rest == "1";
  if (key == "Threads" && ParseNumber(rest, number)) status.threads = number;
}

uint64_t TimeSinceBoot() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

}  // namespace

HVC_ReturnStatus ReadProcessStatus(HostFiles &files, int64_t pid, ProcessStatus &status) {
  status = {};
  status.identity.seenAt = TimeSinceBoot();
  // In the kernel's order within each group.
  const WantedFigure wanted[] = {
      {"VmSize", &status.addressSpace},
      {"VmData", &status.data},
      {"VmStk", &status.stack},
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
  constexpr size_t kRequired = 7;
  Kind kind;
  LineReader lines(files, HostPath("proc/", pid, "/status"));
  status.identity.inode = lines.inode();
  std::string_view line, key, rest;
  // The kernel prints the identity of the process first, then its memory, then Threads. The rest of the file (signals,
  // capabilities) is not read.
  for (size_t left = std::size(wanted); (left > 0 || status.threads == 0) && lines.Next(line);) {
    if (!SplitKey(line, key, rest)) continue;
    kind.hasMemory = kind.hasMemory || key.starts_with("Vm");
    if (TakeFigure(key, rest, wanted)) {
      --left;
    } else {
      TakeLine(key, rest, pid, kind, status);
    }
  }
  if (lines.status() == HVC_NOT_FOUND) return HVC_NOT_FOUND;
  if (lines.status() == HVC_OK) {
    if (!kind.hasMemory || kind.isKernelThread || kind.isZombie || kind.isThread) return HVC_NOT_FOUND;
    status.hugePages = status.hugePages.IfAbsent(Figure(0));
    MarkAbsentUnreadable(std::span(wanted).first<kRequired>());
  } else {
    MarkAbsentUnreadable(wanted);
  }
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
