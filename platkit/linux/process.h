// A process, as its status file tells of it.
#ifndef PLATKIT_LINUX_PROCESS_H
#define PLATKIT_LINUX_PROCESS_H

#include <cstdint>
#include <string>

#include "platkit/linux/figure.h"
#include "platkit/linux/host_files.h"

namespace platkit {

// Amounts are in KB, and unreadable where the file should have given them.
struct ProcessStatus {
  std::string name = "?";
  uint64_t threads = 0;
  Figure size, sizePeak, resident, residentPeak, hugePages, pageTables;

  // Pages of huge page pools are in nobody's resident set.
  Figure Consumed() const { return resident + hugePages; }
  // A lower bound: Linux keeps no peak of the huge pages.
  Figure ConsumedPeak() const { return residentPeak + hugePages; }
};

// Reads the status of a process. What has no memory of its own is HVC_NOT_FOUND: a kernel thread, a zombie, a thread
// other than its process' first. A process whose status is not for this user is there, with nothing known of it.
[[nodiscard]] HVC_ReturnStatus ReadProcessStatus(HostFiles &files, int64_t pid, ProcessStatus &status);

// The process that a thread belongs to.
[[nodiscard]] HVC_ReturnStatus ReadProcessOfThread(HostFiles &files, int64_t thread, int64_t &pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_PROCESS_H
